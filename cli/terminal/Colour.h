// What the terminal on standard output is given.
#pragma once

#include <string_view>

namespace vrn::cli {

// Whether standard output is a terminal, on which control characters would take effect.
[[nodiscard]] bool isOutputTerminal() noexcept;

// Whether to colour output. `when` is `always`, `never`, or `auto`: on a terminal whose user has not set NO_COLOR.
[[nodiscard]] bool wantsColour(std::string_view when) noexcept;

} // namespace vrn::cli

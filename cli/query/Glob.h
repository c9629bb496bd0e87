// Names by pattern, as shells match the names of files.
#pragma once

#include <string_view>

namespace vrn::cli {

// Whether a text holds `*` or `?`.
[[nodiscard]] bool isGlob(std::string_view text) noexcept;

// Whether all of `text` matches: `*` stands for any characters, `?` for one, everything else for itself. Takes at most
// the product of both lengths.
[[nodiscard]] bool matchesGlob(std::string_view text, std::string_view pattern) noexcept;

} // namespace vrn::cli

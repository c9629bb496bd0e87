// Work in a process of its own, for code that ends the process when it meets what it did not expect.
#pragma once

#include <functional>
#include <optional>

namespace vrn::cli {

// What `work` returns, an exit status; nothing if its process was ended by a signal. Whatever `work` does but writing
// files and to the terminal stays in its process. std::bad_alloc there is complained of and is exitTrouble.
[[nodiscard]] std::optional<int> runIsolated(const std::function<int()>& work);

} // namespace vrn::cli

// Work in a process of its own, for code that ends the process when it meets what it did not expect.
#pragma once

#include <functional>

namespace vrn::cli {

// How a process ended: with an exit status, or by a signal, which is 0 if there was none.
struct Ending {
    int status;
    int signal;
};

// Ends with what `work` returns. Whatever `work` does but writing files and to the terminal stays in its process, which
// does not live longer than this one. std::bad_alloc there is complained of and is exitTrouble.
[[nodiscard]] Ending runIsolated(const std::function<int()>& work);

} // namespace vrn::cli

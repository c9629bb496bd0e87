// Runs work in a child process, for code that can crash.
#pragma once

#include <functional>

namespace vrn::cli {

// How the process ended.
struct Ending {
    int status;
    int signal; // that ended it, or 0
};

// Exits the child with the return value of `work`, or with exitTrouble after reporting an exception. Changes to memory
// are not visible to this process. The child does not outlive this process.
[[nodiscard]] Ending runIsolated(const std::function<int()>& work);

} // namespace vrn::cli

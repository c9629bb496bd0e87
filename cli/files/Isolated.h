// Runs work in a child process, for code that can crash, or take any amount of memory or time.
#pragma once

#include "scene/core/Types.h"

#include <functional>

namespace vrn::cli {

// How the process ended.
struct Ending {
    int status;
    int signal; // that ended it, or 0
};

struct ProcessLimits {
    vor::u64 memory;           // bytes more than this process has; an allocation beyond them throws std::bad_alloc
    vor::u64 processorSeconds; // SIGXCPU ends the process after that time; 0 is no limit
};

// Exits the child with the return value of `work`, or with exitTrouble after reporting an exception. Changes to memory
// are not visible to this process. The child does not outlive this process.
[[nodiscard]] Ending runIsolated(const std::function<int()>& work, const ProcessLimits& limits);

// Ends the process with SIGALRM after that many seconds, unless the limit is destroyed before. 0 is no limit.
class TimeLimit {
public:
    explicit TimeLimit(vor::u64 seconds);
    ~TimeLimit();
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
};

} // namespace vrn::cli

#include "cli/files/Isolated.h"

#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <new>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

// Nobody would wait for the result once the parent is gone.
static void exitWithParent(pid_t parent) {
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        std::_Exit(exitTrouble);
}

// The size of the address space in bytes; 0 if it is unknown. It is not small: the sanitizers reserve terabytes.
static vor::u64 addressSpace() {
    std::ifstream status("/proc/self/statm");
    vor::u64 pages = 0;
    status >> pages;
    return pages * static_cast<vor::u64>(sysconf(_SC_PAGESIZE));
}

// A stricter limit of this process stays.
static void limitTo(__rlimit_resource resource, vor::u64 most) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0)
        return;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, most);
    (void)setrlimit(resource, &limit);
}

static void apply(const ProcessLimits& limits) {
    limitTo(RLIMIT_CORE, 0);
    if (limits.processorSeconds != 0)
        limitTo(RLIMIT_CPU, limits.processorSeconds);
    if (const vor::u64 used = addressSpace(); used != 0)
        limitTo(RLIMIT_AS, used + limits.memory);
}

[[noreturn]] static void runAndExit(const std::function<int()>& work) {
    int status = exitTrouble;
    try {
        status = work();
    } catch (const std::bad_alloc&) {
        printError(std::string("vrn: ") + messages::outOfMemory + "\n");
    } catch (const std::exception& error) {
        printError(std::string("vrn: ") + error.what() + "\n");
    }
    std::_Exit(status);
}

Ending runIsolated(const std::function<int()>& work, const ProcessLimits& limits) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        exitWithParent(parent);
        apply(limits);
        runAndExit(work);
    }
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), messages::noProcess);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status))
        clearAbandonedStatus();
    return WIFEXITED(status) ? Ending{WEXITSTATUS(status), 0} : Ending{exitErrors, WTERMSIG(status)};
}

TimeLimit::TimeLimit(vor::u64 seconds) {
    (void)alarm(static_cast<unsigned>(std::min<vor::u64>(seconds, std::numeric_limits<unsigned>::max())));
}

TimeLimit::~TimeLimit() { (void)alarm(0); }

} // namespace vrn::cli

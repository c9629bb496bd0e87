#include "cli/files/Isolated.h"

#include "cli/terminal/Console.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

// Nobody would wait for the work of a process that is gone.
static void endWith(pid_t parent) {
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        std::_Exit(exitTrouble);
}

[[noreturn]] static void work(const std::function<int()>& what) {
    constexpr rlimit noCore{0, 0};
    (void)setrlimit(RLIMIT_CORE, &noCore);
    int status = exitTrouble;
    try {
        status = what();
    } catch (const std::bad_alloc&) {
        printError("vrn: out of memory\n");
    } catch (const std::exception& error) {
        printError(std::string("vrn: ") + error.what() + "\n");
    }
    std::_Exit(status);
}

Ending runIsolated(const std::function<int()>& what) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        endWith(parent);
        work(what);
    }
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "no process for the conversion");
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status))
        clearAbandonedStatus();
    return WIFEXITED(status) ? Ending{WEXITSTATUS(status), 0} : Ending{exitErrors, WTERMSIG(status)};
}

} // namespace vrn::cli

#include "cli/files/Isolated.h"

#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"

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

// Nobody would wait for the result once the parent is gone.
static void exitWithParent(pid_t parent) {
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        std::_Exit(exitTrouble);
}

[[noreturn]] static void runAndExit(const std::function<int()>& work) {
    constexpr rlimit noCore{0, 0};
    (void)setrlimit(RLIMIT_CORE, &noCore);
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

Ending runIsolated(const std::function<int()>& work) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        exitWithParent(parent);
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

} // namespace vrn::cli

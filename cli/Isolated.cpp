#include "cli/Isolated.h"

#include "cli/Console.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

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

std::optional<int> runIsolated(const std::function<int()>& what) {
    const pid_t child = fork();
    if (child == 0)
        work(what);
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "no process for the conversion");
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

} // namespace vrn::cli

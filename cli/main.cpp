// The command `vrn`.
#include "cli/arguments/CommandLine.h"
#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/terminal/Console.h"

#include <csignal>
#include <new>

namespace vrn::cli {

std::vector<Command> allCommands() {
    return {checkCommand(), fmtCommand(),  infoCommand(),    treeCommand(),       queryCommand(), graphCommand(),
            diffCommand(),  dumpCommand(), convertCommand(), completionCommand(), manCommand()};
}

} // namespace vrn::cli

int main(int argc, char** argv) {
    using namespace vrn::cli;
    // Whoever reads the output may have seen enough: that is a quiet end, also where the parent ignores the signal.
    std::signal(SIGPIPE, SIG_DFL);
    try {
        return runCommandLine(allCommands(), argc, argv);
    } catch (const UnusableCatalogue&) {
        return exitTrouble;
    } catch (const std::bad_alloc&) {
        printError("vrn: out of memory\n");
        return exitTrouble;
    } catch (const std::exception& error) {
        printError(std::string("vrn: ") + error.what() + "\n");
        return exitTrouble;
    }
}

// The command `vrn`.
#include "cli/arguments/CommandLine.h"
#include "cli/commands/Commands.h"
#include "cli/files/CatalogueFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"

#include <csignal>
#include <new>

namespace vrn::cli {

std::vector<Command> allCommands() {
    return {checkCommand(), fmtCommand(),  editCommand(), infoCommand(),    treeCommand(),       queryCommand(),
            graphCommand(), diffCommand(), dumpCommand(), convertCommand(), completionCommand(), manCommand()};
}

} // namespace vrn::cli

int main(int argc, char** argv) {
    using namespace vrn::cli;
    // When the reader of the output closes the pipe, end silently, even if the parent ignores the signal.
    std::signal(SIGPIPE, SIG_DFL);
    try {
        return runCommandLine(allCommands(), argc, argv);
    } catch (const UnusableCatalogue&) {
        return exitTrouble;
    } catch (const std::bad_alloc&) {
        printError(std::string("vrn: ") + messages::outOfMemory + "\n");
        return exitTrouble;
    } catch (const std::exception& error) {
        printError(std::string("vrn: ") + error.what() + "\n");
        return exitTrouble;
    }
}

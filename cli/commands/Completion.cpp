#include "cli/shell/Completion.h"

#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"

#include <memory>

namespace vrn::cli {

static int printCompletion(const std::string& shell) {
    const std::vector<Command> commands = allCommands();
    print(shell == "bash"   ? bashCompletion(commands)
          : shell == "fish" ? fishCompletion(commands)
                            : zshCompletion(commands));
    return finishOutput() ? exitOk : exitTrouble;
}

Command completionCommand() {
    const auto shell = std::make_shared<std::string>();
    Command command{.name = "completion",
                    .what = "Print a shell script that completes the arguments of vrn",
                    .example = "source <(vrn completion bash)\nvrn completion fish | source",
                    .run = [shell] { return printCompletion(*shell); }};
    command.options.push_back({.names = "SHELL",
                               .help = "The shell to print the script for",
                               .target = shell.get(),
                               .choices = {"bash", "fish", "zsh"},
                               .isRequired = true});
    return command;
}

} // namespace vrn::cli

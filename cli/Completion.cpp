#include "cli/Completion.h"

#include "cli/Commands.h"
#include "cli/Console.h"

#include <algorithm>
#include <memory>

namespace vrn::cli {

std::string shellQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + '\'';
}

std::string joined(const std::vector<std::string>& words, std::string_view between) {
    std::string text;
    for (const std::string& word : words) {
        text += text.empty() ? "" : between;
        text += word;
    }
    return text;
}

std::vector<std::string> namesOf(const std::vector<Command>& commands) {
    std::vector<std::string> names(commands.size());
    std::ranges::transform(commands, names.begin(), &Command::name);
    return names;
}

std::vector<std::string> valuedNames(const Command& command) {
    std::vector<std::string> valued;
    for (const Option& option : command.options)
        if (!option.isArgument() && !option.isFlag())
            for (const std::string& name : option.nameList())
                valued.push_back(name);
    return valued;
}

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
                    .what = "Print a script that lets a shell complete the words behind vrn",
                    .example = "source <(vrn completion bash)\nvrn completion fish | source",
                    .run = [shell] { return printCompletion(*shell); }};
    command.options.push_back({.names = "SHELL",
                               .help = "Which shell the script is for",
                               .target = shell.get(),
                               .choices = {"bash", "fish", "zsh"},
                               .isRequired = true});
    return command;
}

} // namespace vrn::cli

#include "cli/shell/Completion.h"

namespace vrn::cli {

namespace {

constexpr const char* helpers = R"(# Completes the words behind vrn in fish; made by `vrn completion fish`.

# Whether the command is the one that is named; without a name, whether there is none yet.
function __vrn_has
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end

# Whether an argument of a command is about to follow, by its place among the arguments, which has to match a pattern.
# Last come the options that take a value.
function __vrn_expects
    __vrn_has $argv[1]; or return
    set -l words (commandline -opc)
    set -l place 0
    set -l isValue no
    for word in $words[3..]
        if test $isValue = yes
            set isValue no
        else if contains -- $word $argv[3..]
            set isValue yes
        else if not string match -q -- '-?*' $word
            set place (math $place + 1)
        end
    end
    string match -qr -- "^($argv[2])\$" $place
end

function __vrn_scenes
    __fish_complete_suffix .vrn | string match -r '^[^\t]*(?:\.vrn|/)(?:\t.*)?$'
end

complete -c vrn -f
complete -c vrn -n __vrn_has -s h -l help -d 'Show this help'
complete -c vrn -n __vrn_has -l version -d 'Display program version information and exit'
)";

std::string quoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + '\'';
}

// What completes a value; nothing if nobody knows.
std::string action(const Option& option, const std::string& commandNames) {
    if (!option.choices.empty())
        return " -x -a " + quoted(joined(option.choices, " "));
    switch (option.completion) {
    case Completion::Nothing:
        return " -x";
    case Completion::File:
        return " -r -F";
    case Completion::Scene:
        return " -x -a '(__vrn_scenes)'";
    case Completion::Folder:
        return " -x -a '(__fish_complete_directories)'";
    case Completion::Command:
        return " -x -a " + quoted(commandNames);
    }
    return {};
}

std::string argumentLine(const Command& command, const Option& argument, int place, const std::string& commandNames) {
    const std::string number = std::to_string(place);
    const std::string places = argument.isList() ? "[" + number + "-9]|.." : number;
    std::string condition = "__vrn_expects " + command.name + " \"" + places + '"';
    for (const std::string& name : valuedNames(command))
        condition += ' ' + name;
    return "complete -c vrn -n " + quoted(condition) + action(argument, commandNames) + '\n';
}

std::string optionLine(const Command& command, const Option& option, const std::string& commandNames) {
    std::string line = "complete -c vrn -n " + quoted("__vrn_has " + command.name);
    for (const std::string& name : option.nameList())
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (!option.isFlag())
        line += action(option, commandNames);
    return line + " -d " + quoted(option.help) + '\n';
}

} // namespace

std::string fishCompletion(const std::vector<Command>& commands) {
    const std::string names = joined(namesOf(commands), " ");
    std::string text = helpers;
    for (const Command& command : commands)
        text += "complete -c vrn -n __vrn_has -a " + command.name + " -d " + quoted(command.what) + '\n';
    for (const Command& command : commands) {
        text += '\n';
        int place = 0;
        for (const Option& option : command.options)
            text += option.isArgument() ? argumentLine(command, option, place++, names)
                                        : optionLine(command, option, names);
        text += "complete -c vrn -n " + quoted("__vrn_has " + command.name) + " -s h -l help -d 'Show this help'\n";
    }
    return text;
}

} // namespace vrn::cli

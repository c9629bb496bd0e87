#include "cli/shell/Completion.h"

namespace vrn::cli {

namespace {

constexpr const char* opening = R"(#compdef vrn
# Completes the words behind vrn in zsh; made by `vrn completion zsh`.

_vrn() {
    local state
    local -a line commands=(
)";

constexpr const char* firstWords = R"(    )
    _arguments -C \
        '(- *)'{-h,--help}'[Show this help]' \
        '(- *)--version[Display program version information and exit]' \
        '1:command:->command' \
        '*::argument:->argument'
    case $state in
    command)
        _describe command commands
        ;;
    argument)
        case $words[1] in
)";

constexpr const char* closing = R"(        esac
        ;;
    esac
}

# Either zsh has found this file as a function, or somebody reads it in.
if [[ $funcstack[1] == _vrn ]]; then
    _vrn "$@"
else
    compdef _vrn vrn
fi
)";

// With a backslash before each character that would end a part of what _arguments is told.
std::string escaped(std::string_view text, std::string_view special) {
    std::string result;
    for (const char c : text) {
        if (c == '\\' || special.find(c) != std::string_view::npos)
            result += '\\';
        result += c;
    }
    return result;
}

std::string action(const Option& option, const std::string& commandNames) {
    if (!option.choices.empty())
        return '(' + joined(option.choices, " ") + ')';
    switch (option.completion) {
    case Completion::Nothing:
        return " "; // a value, but which is unknown
    case Completion::File:
        return "_files";
    case Completion::Scene:
        return "_files -g \"*.vrn\"";
    case Completion::Folder:
        return "_files -/";
    case Completion::Command:
        return '(' + commandNames + ')';
    }
    return " ";
}

std::string argumentEntry(const Option& argument, int place, const std::string& commandNames) {
    const std::string where = argument.isList() ? "*" : std::to_string(place);
    const char* colon = argument.isRequired || argument.isList() ? ":" : "::";
    return shellQuoted(where + colon + escaped(argument.names, ":") + ':' + action(argument, commandNames));
}

// `'(-i --in-place)'{-i,--in-place}'[HELP]'`; behind a name with a value stands `=` or `+`, which allow it to be
// joined.
std::string optionEntry(const Option& option, const std::string& commandNames) {
    std::vector<std::string> names = option.nameList();
    const std::string others = option.isList() ? "*" : '(' + joined(names, " ") + ')';
    for (std::string& name : names)
        name += option.isFlag() ? "" : name.starts_with("--") ? "=" : "+";
    std::string rest = '[' + escaped(option.help, "[]") + ']';
    if (!option.isFlag())
        rest += ':' + escaped(option.value, ":") + ':' + action(option, commandNames);
    const std::string spelled = names.size() == 1 ? names[0] : '{' + joined(names, ",") + '}';
    return shellQuoted(others) + spelled + shellQuoted(rest);
}

std::string commandCase(const Command& command, const std::string& commandNames) {
    std::string text = "        " + command.name + ")\n            _arguments \\\n";
    int place = 0;
    for (const Option& option : command.options)
        text +=
            "                " +
            (option.isArgument() ? argumentEntry(option, ++place, commandNames) : optionEntry(option, commandNames)) +
            " \\\n";
    return text + "                '(- *)'{-h,--help}'[Show this help]'\n            ;;\n";
}

} // namespace

std::string zshCompletion(const std::vector<Command>& commands) {
    const std::string names = joined(namesOf(commands), " ");
    std::string text = opening;
    for (const Command& command : commands)
        text += "        " + shellQuoted(command.name + ':' + escaped(command.what, ":")) + '\n';
    text += firstWords;
    for (const Command& command : commands)
        text += commandCase(command, names);
    return text + closing;
}

} // namespace vrn::cli

#include "cli/shell/Completion.h"

namespace vrn::cli {

namespace {

constexpr const char* helpers = R"(# Completes the words behind vrn in bash; made by `vrn completion bash`.

_vrn_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_vrn_paths() {
    compopt -o filenames 2>/dev/null # which fails when nobody is completing
    mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
}

)";

constexpr const char* entry = R"(_vrn() {
    local current=${COMP_WORDS[COMP_CWORD]} command='' option='' place=0 ended='' word options valued
    COMPREPLY=()
    _vrn_options ''
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ $word == '=' ]]; then
            continue # bash takes --option=value for three words
        elif [[ $option ]]; then
            option=''
        elif [[ ! $ended && $word == -- ]]; then
            ended=yes
        elif [[ ! $ended && $word == -?* ]]; then
            [[ " $valued " == *" $word "* ]] && option=$word
        elif [[ $command ]]; then
            ((++place))
        else
            command=$word
            _vrn_options "$command"
        fi
    done
    [[ $current == '=' ]] && current=''
    if [[ ! $option && ! $ended && $current == -* ]]; then
        _vrn_words "$options"
    else
        _vrn_value "$command ${option:-$place}"
    fi
}

complete -F _vrn vrn
)";

std::vector<std::string> allOptionNames(const Command& command) {
    std::vector<std::string> names;
    for (const Option& option : command.options)
        if (!option.isArgument())
            for (const std::string& name : option.nameList())
                names.push_back(name);
    names.insert(names.end(), {"-h", "--help"});
    return names;
}

std::string optionTable(const std::vector<Command>& commands) {
    std::string text = "# The options of a command, and which of them take a value.\n_vrn_options() {\n    case $1 in\n"
                       "    '') options='-h --help --version' valued='' ;;\n";
    for (const Command& command : commands)
        text += "    " + command.name + ")\n        options=" + shellQuoted(joined(allOptionNames(command), " ")) +
                "\n        valued=" + shellQuoted(joined(valuedNames(command), " ")) + " ;;\n";
    return text + "    *) options='' valued='' ;;\n    esac\n}\n\n";
}

// What completes a value; empty if nothing does.
std::string action(const Option& option, const std::string& commandNames) {
    if (!option.choices.empty())
        return "_vrn_words " + shellQuoted(joined(option.choices, " "));
    switch (option.completion) {
    case Completion::Nothing:
        return {};
    case Completion::File:
        return "_vrn_paths -f";
    case Completion::Scene:
        return "_vrn_paths -f -X '!*.vrn' -o plusdirs";
    case Completion::Folder:
        return "_vrn_paths -d";
    case Completion::Command:
        return "_vrn_words " + shellQuoted(commandNames);
    }
    return {};
}

// One line: a pattern of "COMMAND OPTION", or "COMMAND PLACE" for an argument, and what completes it.
std::string valueCase(const std::vector<std::string>& patterns, const std::string& action) {
    return action.empty() ? std::string() : "    " + joined(patterns, " | ") + ") " + action + " ;;\n";
}

// A list goes on where it begins.
std::vector<std::string> placePatterns(const Command& command, const Option& argument, int place) {
    const std::string number = std::to_string(place);
    const std::string name = shellQuoted(command.name + ' ');
    if (!argument.isList())
        return {name + number};
    std::string oneDigit = name;
    oneDigit += '[' + number + "-9]";
    return {oneDigit, name + "[0-9][0-9]*"};
}

std::string valueCases(const Command& command, const std::string& commandNames) {
    std::string text;
    int place = 0;
    for (const Option& option : command.options) {
        std::vector<std::string> patterns;
        if (option.isArgument()) {
            patterns = placePatterns(command, option, place++);
        } else if (!option.isFlag()) {
            for (const std::string& name : option.nameList())
                patterns.push_back(shellQuoted(command.name + ' ' + name));
        }
        text += valueCase(patterns, action(option, commandNames));
    }
    return text;
}

std::string valueTable(const std::vector<Command>& commands) {
    const std::string names = joined(namesOf(commands), " ");
    std::string text = "# Completes what stands behind an option, or an argument by its place.\n_vrn_value() {\n"
                       "    case $1 in\n    ' 0') _vrn_words " +
                       shellQuoted(names) + " ;;\n";
    for (const Command& command : commands)
        text += valueCases(command, names);
    return text + "    esac\n}\n\n";
}

} // namespace

std::string bashCompletion(const std::vector<Command>& commands) {
    return helpers + optionTable(commands) + valueTable(commands) + entry;
}

} // namespace vrn::cli

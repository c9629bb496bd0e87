#include "cli/shell/Completion.h"

#include <algorithm>

namespace vrn::cli {

std::string shellQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + '\'';
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const std::string& word : words) {
        text += text.empty() ? "" : separator;
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

} // namespace vrn::cli

// Takes lines of text formats apart.
#pragma once

#include <algorithm>
#include <string_view>

namespace vrn::convert {

// The first line of a text, which loses it with its line feed.
[[nodiscard]] inline std::string_view takeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

// The first word of a line, which loses it with the blanks around it; empty if there is none.
[[nodiscard]] inline std::string_view takeWord(std::string_view& line) {
    constexpr std::string_view blanks = " \t\r";
    const auto skipBlanks = [&] { line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size())); };
    skipBlanks();
    const std::string_view word = line.substr(0, line.find_first_of(blanks));
    line.remove_prefix(word.size());
    skipBlanks();
    line = line.substr(0, line.find_last_not_of(blanks) + 1);
    return word;
}

} // namespace vrn::convert

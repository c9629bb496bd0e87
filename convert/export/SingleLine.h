// Names in formats of lines.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// A text without what would end its line or continue it on the next one.
[[nodiscard]] inline std::string singleLine(std::string_view text) {
    std::string line(text);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F')
            c = '_';
    if (line.ends_with('\\'))
        line.back() = '_';
    return line;
}

} // namespace vrn::convert

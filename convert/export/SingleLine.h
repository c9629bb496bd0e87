// Names in formats of lines.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vrn::convert {

// A text without what would end its line or continue it on the next one, and without outer spaces, which readers drop.
// Never empty.
[[nodiscard]] inline std::string singleLine(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    std::string line(text.substr(first, text.find_last_not_of(' ') + 1 - first));
    for (char& c : line)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F')
            c = '_';
    if (line.ends_with('\\'))
        line.back() = '_';
    return line.empty() ? "_" : line;
}

} // namespace vrn::convert

#include "scene/syntax/QuotedString.h"

#include "scene/core/TextEncoding.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

// Appends the escape of a quote, a backslash, a control character or a byte that is not UTF-8.
static void appendEscaped(char c, std::string& text) {
    const auto [high, low] = hexDigits(static_cast<u8>(c));
    switch (c) {
    case '"':
    case '\\':
        text.append(1, '\\').append(1, c);
        return;
    case '\n':
        text += "\\n";
        return;
    case '\t':
        text += "\\t";
        return;
    case '\r':
        text += "\\r";
        return;
    default:
        text.append("\\x").append({high, low});
    }
}

void appendQuoted(std::string_view string, std::string& text) {
    text += '"';
    while (!string.empty()) {
        const auto isPlain = [](char c) { return String::isPrintable(c) && c != '"' && c != '\\'; };
        const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(string, isPlain) - string.begin());
        text += string.substr(0, plain);
        string.remove_prefix(plain);
        if (string.empty())
            break;
        const std::size_t length = static_cast<u8>(string[0]) < 0x80 ? 0 : utf8Length(string);
        if (length == 0)
            appendEscaped(string[0], text);
        else
            text += string.substr(0, length);
        string.remove_prefix(std::max<std::size_t>(length, 1));
    }
    text += '"';
}

} // namespace vor::velmo_sdk::impl

#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <string>

namespace vor {

namespace {

bool isBetween(char c, int low, int high) noexcept {
    const int byte = static_cast<u8>(c);
    return byte >= low && byte <= high;
}

// The range of the second byte depends on the lead byte: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isSecondByte(u8 lead, char c) noexcept {
    const int low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const int high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return isBetween(c, low, high);
}

std::size_t lengthByLead(u8 lead) noexcept {
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

void appendHex(const char* prefix, char c, std::string& out) {
    const auto [high, low] = hexDigits(static_cast<u8>(c));
    out += prefix;
    out += {high, low};
}

} // namespace

std::size_t utf8Length(std::string_view text) noexcept {
    if (text.empty())
        return 0;
    const u8 lead = static_cast<u8>(text[0]);
    const std::size_t length = lengthByLead(lead);
    if (length > text.size() || (length > 1 && !isSecondByte(lead, text[1])))
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (!isContinuation(text[i]))
            return 0;
    return length;
}

std::size_t characterStart(std::string_view text, std::size_t at) noexcept {
    constexpr std::size_t maxContinuations = 3;
    std::size_t start = at;
    while (start < text.size() && start > 0 && at - start < maxContinuations && isContinuation(text[start]))
        --start;
    return start < at && utf8Length(text.substr(start)) > at - start ? start : at;
}

std::string truncated(std::string_view text, std::size_t length) {
    if (text.size() <= length)
        return std::string(text);
    return std::string(text.substr(0, characterStart(text, length))) + "...";
}

bool isUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

String toUtf8(const String& text) {
    if (isUtf8(text))
        return text;
    std::string out;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = utf8Length(rest);
        if (length == 0)
            out += "\uFFFD";
        else
            out += rest.substr(0, length);
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return std::string_view(out);
}

std::size_t escapeCharacter(std::string_view text, std::string& out) {
    const char c = text[0];
    const std::size_t length = utf8Length(text);
    const bool isControl =
        isBetween(c, 0, 31) || c == 127 || (length == 2 && c == '\xC2' && isBetween(text[1], 0x80, 0x9F));
    if (length != 0 && !isControl) {
        out += text.substr(0, length);
        return length;
    }
    if (c == '\n' || c == '\t' || c == '\r')
        out += c == '\n' ? "\\n" : c == '\t' ? "\\t" : "\\r";
    else
        for (std::size_t i = 0; i < std::max<std::size_t>(length, 1); ++i)
            appendHex("\\x", text[i], out);
    return std::max<std::size_t>(length, 1);
}

String escapeForTerminal(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty())
        text.remove_prefix(escapeCharacter(text, out));
    return std::string_view(out);
}

std::string quoteForJson(std::string_view utf8) {
    std::string out = "\"";
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const char c = utf8[i];
        if (isBetween(c, 0, 31) || c == 127) {
            appendHex("\\u00", c, out);
        } else if (c == '\xC2' && i + 1 < utf8.size() && isBetween(utf8[i + 1], 0x80, 0x9F)) {
            appendHex("\\u00", utf8[++i], out);
        } else {
            if (c == '"' || c == '\\')
                out += '\\';
            out += c;
        }
    }
    out += '"';
    return out;
}

} // namespace vor

#include "convert/shared/Utf16.h"

#include "scene/core/Utf8.h"

namespace vrn::convert {

std::optional<std::string> utf8FromUtf16(std::string_view content) {
    const bool isBigEndian = content.starts_with("\xFE\xFF");
    if (!isBigEndian && !content.starts_with("\xFF\xFE"))
        return {};
    const auto unitAt = [&](std::size_t i) -> char32_t {
        const auto first = static_cast<unsigned char>(content[i]);
        const auto second = static_cast<unsigned char>(content[i + 1]);
        return isBigEndian ? char32_t(first) << 8 | second : char32_t(second) << 8 | first;
    };
    constexpr char32_t replacement = 0xFFFD;
    std::string text;
    for (std::size_t i = 2; i + 1 < content.size(); i += 2) {
        char32_t c = unitAt(i);
        const char32_t next = i + 3 < content.size() ? unitAt(i + 2) : 0;
        if (c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
            i += 2;
        } else if (c >= 0xD800 && c < 0xE000) {
            c = replacement;
        }
        vor::appendUtf8(text, c);
    }
    return text;
}

} // namespace vrn::convert

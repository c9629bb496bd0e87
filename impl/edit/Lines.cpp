#include "impl/edit/Lines.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isBlankInLine(char c) noexcept { return c == ' ' || c == '\t'; }

} // namespace

std::size_t Lines::beginOf(std::size_t at) const noexcept {
    while (at != 0 && !isLineBreak(text_[at - 1]))
        --at;
    return at == 0 && text_.starts_with(byteOrderMark) ? byteOrderMark.size() : at;
}

std::size_t Lines::beforeBlanks(std::size_t at) const noexcept {
    while (at != 0 && isBlankInLine(text_[at - 1]))
        --at;
    return at;
}

std::size_t Lines::afterBlanks(std::size_t at) const noexcept {
    while (at < text_.size() && isBlankInLine(text_[at]))
        ++at;
    return at;
}

std::size_t Lines::afterBreak(std::size_t at) const noexcept {
    if (text_.substr(at).starts_with("\r\n"))
        return at + 2;
    return at + (at < text_.size() && isLineBreak(text_[at]) ? 1 : 0);
}

std::size_t Lines::beforeBreak(std::size_t at) const noexcept {
    if (text_.substr(0, at).ends_with("\r\n"))
        return at - 2;
    return at - (at != 0 && isLineBreak(text_[at - 1]) ? 1 : 0);
}

std::size_t Lines::breaksIn(std::size_t begin, std::size_t end) const noexcept {
    std::size_t count = 0;
    for (std::size_t at = begin; at < end; ++at)
        if (const std::size_t after = afterBreak(at); after != at) {
            ++count;
            at = after - 1;
        }
    return count;
}

bool Lines::isBlank(std::size_t begin) const noexcept {
    const std::size_t end = afterBlanks(begin);
    return endsAt(end) && afterBreak(end) != end;
}

std::string_view Lines::indentationOf(std::size_t at) const noexcept {
    const std::size_t begin = std::max(beforeBlanks(at), beginOf(at));
    return text_.substr(begin, at - begin);
}

std::string_view Lines::lineBreak() const noexcept {
    const auto first = static_cast<std::size_t>(std::ranges::find_if(text_, isLineBreak) - text_.begin());
    return isEnd(first) ? "\n" : text_.substr(first, afterBreak(first) - first);
}

std::vector<TextPosition> Lines::positionsOf(std::vector<std::size_t> offsets) const {
    std::ranges::sort(offsets);
    std::vector<TextPosition> positions;
    std::size_t lineBegin = 0;
    i32 line = 1;
    for (const std::size_t offset : offsets) {
        for (std::size_t end = text_.find('\n', lineBegin); end < offset; end = text_.find('\n', lineBegin)) {
            lineBegin = end + 1;
            ++line;
        }
        positions.push_back({line, static_cast<i32>(offset - lineBegin + 1)});
    }
    return positions;
}

std::vector<std::size_t> Lines::offsetOf(TextPosition position) const {
    if (position.line < 1 || position.column < 1)
        return {};
    std::size_t begin = 0;
    for (i32 line = 1; line < position.line; ++line)
        begin = text_.find('\n', begin) + 1;
    return {std::min(begin + static_cast<std::size_t>(position.column) - 1, text_.size())};
}

} // namespace vor::velmo_sdk::impl

// The lines of a text.
//
// A line ends with LF, CR or both, as comments do. Only the positions of diagnostics follow the reader, which counts
// line feeds.
#pragma once

#include "scene/core/Log.h"

#include <span>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

class Lines {
public:
    explicit Lines(std::string_view text) noexcept : text_(text) {}

    // Where the line of a character begins.
    [[nodiscard]] std::size_t beginOf(std::size_t at) const noexcept;
    // Where the blanks before or after a place in a line begin or end.
    [[nodiscard]] std::size_t beforeBlanks(std::size_t at) const noexcept;
    [[nodiscard]] std::size_t afterBlanks(std::size_t at) const noexcept;

    [[nodiscard]] bool isEnd(std::size_t at) const noexcept { return at == text_.size(); }
    [[nodiscard]] bool endsAt(std::size_t at) const noexcept { return isEnd(at) || isLineBreak(text_[at]); }
    [[nodiscard]] bool isComment(std::size_t at) const noexcept { return at < text_.size() && text_[at] == '#'; }

    // The place after the line break at a place, and before the one that ends there; the place itself without one.
    [[nodiscard]] std::size_t afterBreak(std::size_t at) const noexcept;
    [[nodiscard]] std::size_t beforeBreak(std::size_t at) const noexcept;

    // The number of line breaks between two places.
    [[nodiscard]] std::size_t breaksIn(std::size_t begin, std::size_t end) const noexcept;

    // Whether the line that begins at a place consists of blanks.
    [[nodiscard]] bool isBlank(std::size_t begin) const noexcept;

    // Whether nothing but blanks is before a place in its line.
    [[nodiscard]] bool isFirst(std::size_t at) const noexcept { return beforeBlanks(at) <= beginOf(at); }

    [[nodiscard]] std::string_view indentationOf(std::size_t at) const noexcept;

    // The line break that the text uses, by its first one.
    [[nodiscard]] std::string_view lineBreak() const noexcept;

    // The positions of some offsets, in order; and the offset of a position, if there is one.
    [[nodiscard]] std::vector<TextPosition> positionsOf(std::vector<std::size_t> offsets) const;
    [[nodiscard]] std::vector<std::size_t> offsetOf(TextPosition position) const;

private:
    [[nodiscard]] static bool isLineBreak(char c) noexcept { return c == '\n' || c == '\r'; }

    std::string_view text_;
};

} // namespace vor::velmo_sdk::impl

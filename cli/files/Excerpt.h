// The lines of a text that its diagnostics speak of.
#pragma once

#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <string>
#include <vector>

namespace vrn::cli {

// A line, or the part of a very long one around a position.
struct Excerpt {
    std::string text;
    std::size_t caret = 0; // bytes of `text` before the position
    vor::i64 column = 0;   // of the position in the line, in characters; 0 if there is no such line
    bool isCutBefore = false;
    bool isCutBehind = false;
    bool exists = false; // not for a position that is unknown or beyond the end

    // The line and, below it, a caret under the position; empty if there is no such line. Tabs stay
    // tabs, other control characters are escaped.
    [[nodiscard]] std::string withCaret() const;
};

// The excerpts of all positions, in their order. Reads the text once, holding no more than the
// excerpts.
[[nodiscard]] std::vector<Excerpt> readExcerpts(vor::File file, const std::vector<vor::TextPosition>& positions);

} // namespace vrn::cli

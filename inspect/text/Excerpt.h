// The lines of a file that diagnostics refer to.
//
//     for (const Excerpt& excerpt : readExcerpts(File::open(path), positions))
//         text += excerpt.withCaret();
//
// Excerpts own their text. Linear in the file up to the last position.
#pragma once

#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <string>
#include <vector>

namespace vrn::inspect {

// A line, or the part of a very long line around a position.
struct Excerpt {
    std::string text;
    std::size_t caret = 0; // bytes of `text` before the position
    vor::i64 column = 0;   // of the position, in characters from 1; 0 if there is no such line
    bool isCutBefore = false;
    bool isCutAfter = false;
    bool exists = false; // false for an unknown position, or one beyond the end of the file

    // The line and, below it, a caret under the position; empty if there is no such line. Control characters except
    // tabs are escaped.
    [[nodiscard]] std::string withCaret() const;
};

// The excerpts for all positions, in their order. Reads the file once and holds only the excerpts in memory.
[[nodiscard]] std::vector<Excerpt> readExcerpts(vor::File file, const std::vector<vor::TextPosition>& positions);

} // namespace vrn::inspect

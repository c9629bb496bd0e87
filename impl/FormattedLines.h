// Writes the lines of a formatted text and aligns their trailing comments.
#pragma once

#include "scene/core/TextSink.h"

#include <string>
#include <vector>

namespace vor::velmo_sdk::impl {

class FormattedLines {
public:
    // The comments of lines that end beyond the column are not aligned, but follow two blanks after the line.
    FormattedLines(const TextSink& sink, std::size_t column) : text_(sink), column_(column) {}

    // One or more lines, without the last line feed.
    struct Line {
        std::string text;
        bool isAfterBlank = false; // preceded by a blank line, unless it is the first line of the text
        std::string comment{};     // the trailing comment
    };

    void append(Line line);

    // Sets the trailing comment of the line that was appended last.
    void appendComment(std::string_view comment) { run_.back().comment = comment; }

    void finish();

private:
    void flushRun();

    TextBlock text_;
    std::size_t column_;
    std::vector<Line> run_; // consecutive lines to be aligned; only the last one may have no comment
    bool isFirst_ = true;
};

} // namespace vor::velmo_sdk::impl

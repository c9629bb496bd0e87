// The lines of a formatted text, with the comments behind them one below the other.
#pragma once

#include "scene/core/TextSink.h"

#include <string>
#include <vector>

namespace vor::velmo_sdk::impl {

class FormattedLines {
public:
    // Lines that end beyond the column have their comments just behind them; 0 means none do.
    FormattedLines(const TextSink& sink, std::size_t column) : text_(sink), column_(column) {}

    // A line, or several, without the last line feed.
    struct Line {
        std::string text;
        bool isAfterBlank = false; // a blank line stands before it, unless it is the first
        std::string comment{};     // behind it
    };

    void append(Line line);

    // Puts a comment behind the line that came last.
    void appendComment(std::string_view comment) { run_.back().comment = comment; }

    void finish();

private:
    void flushRun();

    TextBlock text_;
    std::size_t column_;
    std::vector<Line> run_; // lines that follow each other, of which only the last may have no comment
    bool isFirst_ = true;
};

} // namespace vor::velmo_sdk::impl

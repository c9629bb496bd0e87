#include "impl/FormattedLines.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

std::size_t lastLineLength(std::string_view text) noexcept { return text.size() - (text.rfind('\n') + 1); }

} // namespace

void FormattedLines::append(Line line) {
    const bool goesOn = !run_.empty() && !run_.back().comment.empty() && !line.isAfterBlank;
    if (!goesOn)
        flushRun();
    run_.push_back(std::move(line));
}

void FormattedLines::flushRun() {
    std::size_t width = 0;
    for (const Line& line : run_)
        if (!line.comment.empty())
            width = std::max(width, lastLineLength(line.text));
    for (const Line& line : run_) {
        if (line.isAfterBlank && !isFirst_)
            text_.append('\n');
        isFirst_ = false;
        text_.append(line.text);
        if (!line.comment.empty()) {
            text_.append(width + 2 - lastLineLength(line.text), ' ');
            text_.append(line.comment);
        }
        text_.append('\n');
    }
    run_.clear();
}

void FormattedLines::finish() {
    flushRun();
    text_.flush();
}

} // namespace vor::velmo_sdk::impl

#include "impl/FormattedLines.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

std::size_t lastLineLength(std::string_view text) noexcept { return text.size() - (text.rfind('\n') + 1); }

} // namespace

void FormattedLines::append(Line line) {
    constexpr std::size_t maxRun = 1000; // lines held in memory
    const bool continues = !run_.empty() && !run_.back().comment.empty() && !line.isAfterBlank && run_.size() < maxRun;
    if (!continues)
        flushRun();
    run_.push_back(std::move(line));
}

void FormattedLines::flushRun() {
    std::size_t width = 0;
    for (const Line& line : run_)
        if (const std::size_t length = lastLineLength(line.text); !line.comment.empty() && length <= column_)
            width = std::max(width, length);
    for (const Line& line : run_) {
        if (line.isAfterBlank && !isFirst_)
            text_.append('\n');
        isFirst_ = false;
        text_.append(line.text);
        if (!line.comment.empty()) {
            text_.append(2 + width - std::min(width, lastLineLength(line.text)), ' ');
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

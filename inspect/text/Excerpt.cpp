#include "inspect/text/Excerpt.h"

#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <numeric>

namespace vrn::inspect {

using namespace vor;

namespace {

// How many bytes of a line are shown before and after the position.
constexpr i64 widthBefore = 120;
constexpr i64 widthAfter = 60;

constexpr std::string_view ellipsis = "...";

i64 caretColumn(TextPosition position) { return std::max<i64>(position.column, 1); }

// Fills the excerpts as the bytes of the file go by, one line at a time.
class Collector {
public:
    Collector(const std::vector<TextPosition>& positions, std::vector<Excerpt>& excerpts)
        : positions_(positions), excerpts_(excerpts), order_(positions.size()) {
        std::iota(order_.begin(), order_.end(), std::size_t(0));
        std::ranges::stable_sort(order_, [&](std::size_t a, std::size_t b) {
            return std::pair(positions[a].line, caretColumn(positions[a])) <
                   std::pair(positions[b].line, caretColumn(positions[b]));
        });
        while (first_ < order_.size() && positions_[order_[first_]].line <= 0)
            ++first_;
        next_ = first_;
    }

    [[nodiscard]] bool isDone() const { return first_ == order_.size(); }

    void beginLine(i64 line) {
        for (next_ = first_; next_ < order_.size() && positions_[order_[next_]].line == line; ++next_)
            excerpts_[order_[next_]].exists = true;
        open_ = first_;
        reached_ = first_;
        characters_ = 0;
    }

    void add(char c, i64 column) {
        characters_ += isContinuation(c) ? 0 : 1;
        while (reached_ < next_ && caretColumn(positions_[order_[reached_]]) == column)
            excerpts_[order_[reached_++]].column = std::max<i64>(characters_, 1);
        // All windows are equally wide, so the first to open is the first to end.
        while (open_ < next_ && column > caretColumn(positions_[order_[open_]]) + widthAfter)
            excerpts_[order_[open_++]].isCutAfter = true;
        for (std::size_t i = open_; i < next_; ++i) {
            const i64 caret = caretColumn(positions_[order_[i]]);
            if (column < caret - widthBefore)
                return; // the remaining windows start even later
            Excerpt& excerpt = excerpts_[order_[i]];
            excerpt.isCutBefore = caret > widthBefore + 1;
            excerpt.text += c;
            excerpt.caret += column < caret ? 1 : 0;
        }
    }

    void endLine() {
        while (reached_ < next_)
            excerpts_[order_[reached_++]].column = characters_ + 1;
        first_ = next_;
    }

private:
    const std::vector<TextPosition>& positions_;
    std::vector<Excerpt>& excerpts_;
    std::vector<std::size_t> order_; // the indices of the positions, sorted by line and column
    std::size_t first_ = 0;          // the first of this line, in order_
    std::size_t open_ = 0;           // the first of them whose window has not ended
    std::size_t reached_ = 0;        // the first of them whose column has not been reached
    std::size_t next_ = 0;           // the first of a later line
    i64 characters_ = 0;             // seen in this line so far
};

// Removes the parts of characters that truncation has left at the ends.
void removePartialCharacters(Excerpt& excerpt) {
    std::size_t partial = 0;
    while (excerpt.isCutBefore && partial < 3 && partial < excerpt.caret && isContinuation(excerpt.text[partial]))
        ++partial;
    excerpt.text.erase(0, partial);
    excerpt.caret -= partial;
    for (std::size_t tail = 1; excerpt.isCutAfter && tail <= 3 && tail < excerpt.text.size(); ++tail) {
        const std::size_t start = excerpt.text.size() - tail;
        if (isContinuation(excerpt.text[start]))
            continue;
        if (static_cast<u8>(excerpt.text[start]) >= 0xC0 &&
            utf8Length(std::string_view(excerpt.text).substr(start)) == 0)
            excerpt.text.erase(start);
        return;
    }
}

} // namespace

std::string Excerpt::withCaret() const {
    if (!exists)
        return {};
    Excerpt whole = *this;
    removePartialCharacters(whole);
    if (!whole.isCutAfter && whole.text.ends_with('\r'))
        whole.text.pop_back();
    std::string line(isCutBefore ? ellipsis : "");
    std::string below(line.size(), ' ');
    for (std::string_view rest = whole.text; !rest.empty();) {
        const bool isBeforeCaret = whole.text.size() - rest.size() < whole.caret;
        const std::size_t shown = line.size();
        std::size_t consumed = 1;
        if (rest[0] == '\t')
            line += '\t';
        else
            consumed = escapeCharacter(rest, line);
        if (isBeforeCaret && rest[0] == '\t')
            below += '\t';
        else if (isBeforeCaret) // a multibyte character occupies one column
            below.append(utf8Length(rest) > 1 && line[shown] != '\\' ? 1 : line.size() - shown, ' ');
        rest.remove_prefix(consumed);
    }
    if (isCutAfter)
        line += ellipsis;
    return line + '\n' + below + "^\n";
}

std::vector<Excerpt> readExcerpts(File file, const std::vector<TextPosition>& positions) {
    std::vector<Excerpt> excerpts(positions.size());
    Collector collector(positions, excerpts);
    i64 line = 1;
    i64 column = 0;
    collector.beginLine(line);
    for (char c; !collector.isDone() && file.read(c);) {
        if (c == '\n') {
            collector.endLine();
            collector.beginLine(++line);
            column = 0;
        } else {
            collector.add(c, ++column);
        }
    }
    collector.endLine();
    return excerpts;
}

} // namespace vrn::inspect

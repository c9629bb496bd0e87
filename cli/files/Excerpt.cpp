#include "cli/files/Excerpt.h"

#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <numeric>

namespace vrn::cli {

using namespace vor;

namespace {

// How much of a line is shown before and behind the position, in bytes.
constexpr i64 widthBefore = 120;
constexpr i64 widthBehind = 60;

constexpr std::string_view ellipsis = "...";

bool isContinuation(char c) { return (static_cast<u8>(c) & 0xC0) == 0x80; }

i64 caretColumn(TextPosition position) { return std::max<i64>(position.column, 1); }

// Fills the excerpts of one line while its bytes go by; `order` lists them by line and column.
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

    void take(char c, i64 column) {
        characters_ += isContinuation(c) ? 0 : 1;
        while (reached_ < next_ && caretColumn(positions_[order_[reached_]]) == column)
            excerpts_[order_[reached_++]].column = std::max<i64>(characters_, 1);
        // Those whose window has gone by are at the front, for all windows are equally wide.
        while (open_ < next_ && column > caretColumn(positions_[order_[open_]]) + widthBehind)
            excerpts_[order_[open_++]].isCutBehind = true;
        for (std::size_t i = open_; i < next_; ++i) {
            const i64 caret = caretColumn(positions_[order_[i]]);
            if (column < caret - widthBefore)
                return; // and so are the windows of all that follow
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
    std::vector<std::size_t> order_;
    std::size_t first_ = 0;   // of this line, in order_
    std::size_t open_ = 0;    // the first of them that still takes bytes
    std::size_t reached_ = 0; // the first of them whose column is still to come
    std::size_t next_ = 0;    // behind this line's
    i64 characters_ = 0;      // of this line so far
};

// Takes off the pieces of characters that a cut has left at the ends.
void mendCuts(Excerpt& excerpt) {
    std::size_t pieces = 0;
    while (excerpt.isCutBefore && pieces < 3 && pieces < excerpt.caret && isContinuation(excerpt.text[pieces]))
        ++pieces;
    excerpt.text.erase(0, pieces);
    excerpt.caret -= pieces;
    for (std::size_t tail = 1; excerpt.isCutBehind && tail <= 3 && tail < excerpt.text.size(); ++tail) {
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
    mendCuts(whole);
    if (!whole.isCutBehind && whole.text.ends_with('\r'))
        whole.text.pop_back();
    std::string line(isCutBefore ? ellipsis : "");
    std::string below(line.size(), ' ');
    for (std::string_view rest = whole.text; !rest.empty();) {
        const bool isBeforeCaret = whole.text.size() - rest.size() < whole.caret;
        const std::size_t shown = line.size();
        std::size_t taken = 1;
        if (rest[0] == '\t')
            line += '\t';
        else
            taken = escapeCharacter(rest, line);
        if (isBeforeCaret && rest[0] == '\t')
            below += '\t';
        else if (isBeforeCaret) // a character of several bytes takes one column
            below.append(utf8Length(rest) > 1 && line[shown] != '\\' ? 1 : line.size() - shown, ' ');
        rest.remove_prefix(taken);
    }
    if (isCutBehind)
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
            collector.take(c, ++column);
        }
    }
    collector.endLine();
    return excerpts;
}

} // namespace vrn::cli

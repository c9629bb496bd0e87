#include "impl/edit/Layout.h"

#include "impl/edit/Lines.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

// The blanks between the parts of an assignment.
struct Gaps {
    std::string_view beforeSign;
    std::string_view afterSign;
    std::size_t pathLength;
};

Gaps gapsOf(const Statements& statements, const Statement& from) {
    const std::string_view text = statements.text();
    const std::string_view between = Span{from.path.end, from.value.begin}.of(text);
    const std::size_t sign = between.find_first_of("|=");
    return {between.substr(0, sign), between.substr(between.find('=') + 1), from.path.end - from.path.begin};
}

// The assignment nearest to a statement, which comes first, then those before it, then those after it; or null.
const Statement* nearestAssignment(const Statements& statements, std::size_t from) {
    const auto& all = statements.all();
    for (std::size_t i = from + 1; i-- > 0;)
        if (all[i].isAssignment())
            return &all[i];
    const auto next = std::find_if(all.begin() + static_cast<std::ptrdiff_t>(from), all.end(),
                                   [](const Statement& each) { return each.isAssignment(); });
    return next == all.end() ? nullptr : &*next;
}

bool areSpaces(std::string_view gap) noexcept { return gap.find_first_not_of(' ') == std::string_view::npos; }

// If the sign of the neighbour is aligned, it is in the same column, as far as the path permits.
std::string assignmentText(const Statements& statements, std::size_t after, std::string_view path,
                           std::string_view sign, std::string_view value) {
    const Statement* neighbour = nearestAssignment(statements, after);
    std::size_t before = 1;
    std::size_t behind = 1;
    if (neighbour) {
        const Gaps gaps = gapsOf(statements, *neighbour);
        if (areSpaces(gaps.beforeSign)) {
            const std::size_t column = gaps.pathLength + gaps.beforeSign.size();
            before = gaps.beforeSign.size() < 2 ? gaps.beforeSign.size() : column - std::min(column - 1, path.size());
        }
        behind = areSpaces(gaps.afterSign) ? gaps.afterSign.size() : 1;
    }
    std::string text(path);
    text.append(before, ' ').append(sign).append(behind, ' ').append(value);
    return text + ';';
}

// The indentation of the first statement in the text that belongs to the current node and begins a line.
std::string dottedIndentation(const Statements& statements) {
    const Lines lines(statements.text());
    for (const Statement& each : statements.all())
        if (each.hasDot && lines.isFirst(each.all.begin))
            return std::string(lines.indentationOf(each.all.begin));
    return std::string(4, ' ');
}

// The statements from `i` on that are removed and follow each other on one line.
std::size_t endOfGroup(const Statements& statements, std::span<const std::size_t> removed, std::size_t i) {
    const Lines lines(statements.text());
    const auto areTogether = [&](std::size_t a, std::size_t b) {
        return a + 1 == b && lines.breaksIn(statements.all()[a].all.end, statements.all()[b].all.begin) == 0;
    };
    while (i + 1 < removed.size() && areTogether(removed[i], removed[i + 1]))
        ++i;
    return i + 1;
}

// What is removed with some statements: with nothing else in their lines, all of these lines.
Span removedWith(const Lines& lines, Span span) {
    const std::size_t next = lines.afterBlanks(span.end);
    if (!lines.endsAt(next))
        return {span.begin, next}; // a comment or statement takes their place
    if (!lines.isFirst(span.begin))
        return {lines.beforeBlanks(span.begin), span.end};
    const std::size_t begin = lines.beginOf(span.begin);
    const std::size_t end = lines.afterBreak(next);
    return end != next ? Span{begin, end} : Span{lines.beforeBreak(begin), end};
}

// Extends whole lines that leave two blank lines together, or one at an end of the text, by one of them.
Span withBlankLine(const Lines& lines, Span span) {
    const std::size_t line = lines.beginOf(span.begin);
    if (lines.isEnd(span.end) && lines.isBlank(line))
        return {lines.beforeBreak(line), span.end}; // the last line, which has no line break
    if (line != span.begin || lines.beginOf(span.end) != span.end)
        return span;
    const std::size_t before = lines.beginOf(lines.beforeBreak(span.begin));
    const bool isFirst = before == span.begin;
    const bool isAfterBlank = !isFirst && lines.isBlank(before);
    if (isAfterBlank && lines.isEnd(span.end))
        return {before, span.end};
    if ((isAfterBlank || isFirst) && lines.isBlank(span.end))
        span.end = lines.afterBreak(lines.afterBlanks(span.end));
    return span;
}

} // namespace

TextChange insertAssignment(const Statements& statements, std::size_t after, std::string_view path,
                            std::string_view sign, std::string_view value) {
    const Lines lines(statements.text());
    const Statement& neighbour = statements.all()[after];
    const bool isDotted = neighbour.hasDot || neighbour.endsInColon;
    const std::string text =
        assignmentText(statements, after, isDotted ? path.substr(path.find('.')) : path, sign, value);
    const std::size_t end = neighbour.all.end;
    const std::size_t next = lines.afterBlanks(end);
    const bool hasComment = lines.isComment(next);
    if (!lines.isFirst(neighbour.all.begin) || !(hasComment || lines.endsAt(next)))
        return {end, 0, ' ' + text};
    std::string indentation(lines.indentationOf(neighbour.all.begin));
    if (neighbour.endsInColon)
        indentation = dottedIndentation(statements);
    const std::size_t place = hasComment ? statements.all()[after + 1].all.end : end;
    return {place, 0, std::string(lines.lineBreak()) + indentation + text};
}

TextChange appendDeclaration(const Statements& statements, std::string_view typeAndName) {
    const Lines lines(statements.text());
    const auto& all = statements.all();
    const auto last = std::find_if(all.rbegin(), all.rend(),
                                   [](const Statement& each) { return each.kind == StatementKind::Declaration; });
    const bool endsInColon = last != all.rend() && last->endsInColon && !typeAndName.starts_with("define ");
    std::string text = std::string(typeAndName) + (endsInColon ? ':' : ';');
    const std::string lineBreak(lines.lineBreak());
    if (all.empty())
        return {statements.end(), 0, text + lineBreak};
    // As many line breaks as before the last declaration and its comments; before the first one, as its form suggests.
    std::size_t breaks = endsInColon ? 2 : 1;
    if (last != all.rend()) {
        auto first = all.rend() - last - 1;
        const auto breaksBefore = [&](std::ptrdiff_t i) {
            const auto index = static_cast<std::size_t>(i);
            return lines.breaksIn(all[index - 1].all.end, all[index].all.begin);
        };
        while (first > 0 && all[static_cast<std::size_t>(first) - 1].kind == StatementKind::Comment &&
               breaksBefore(first) == 1)
            --first;
        if (first > 0)
            breaks = std::clamp<std::size_t>(breaksBefore(first), 1, 2);
    }
    for (; breaks > 0; --breaks)
        text.insert(0, lineBreak);
    return {all.back().all.end, 0, text};
}

std::vector<TextChange> removeStatements(const Statements& statements, std::span<const std::size_t> removed) {
    const Lines lines(statements.text());
    std::vector<Span> spans;
    for (std::size_t i = 0; i < removed.size();) {
        const std::size_t end = endOfGroup(statements, removed, i);
        const Span span =
            removedWith(lines, {statements.all()[removed[i]].all.begin, statements.all()[removed[end - 1]].all.end});
        if (!spans.empty() && span.begin <= spans.back().end)
            spans.back().end = std::max(spans.back().end, span.end);
        else
            spans.push_back(span);
        i = end;
    }
    std::vector<TextChange> changes;
    for (const Span& span : spans) {
        const Span wide = withBlankLine(lines, span);
        const u64 begin =
            changes.empty() ? wide.begin : std::max(wide.begin, changes.back().offset + changes.back().removed);
        changes.push_back({begin, wide.end - begin});
    }
    return changes;
}

} // namespace vor::velmo_sdk::impl

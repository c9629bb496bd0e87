#include "impl/lexer/PlainStatement.h"

#include "impl/lexer/Word.h"
#include "scene/core/PlainNumber.h"
#include "scene/syntax/CharClass.h"
#include "scene/syntax/ScalarKeyword.h"

namespace vor::velmo_sdk::impl {

namespace {

using Kind = PlainStatement::Kind;

bool isLiteral(std::string_view word) noexcept {
    if (word.size() != 4 && word.size() != 5)
        return false;
    const u64 number = keywordNumber(word);
    return number == keyword("true") || number == keyword("false") || number == keyword("null");
}

// A declaration cannot begin with these: they begin statements of their own.
bool isStatementKeyword(std::string_view word) noexcept {
    if (word.size() != 6)
        return false;
    const u64 number = keywordNumber(word);
    return number == keyword("remove") || number == keyword("define");
}

// A place in the window, and the steps of the scanner: each moves past what it recognises. A copy in local variables,
// which stay in registers because all steps are inlined.
struct Cursor : TextPlace {
    // Steps check the limit before they begin, and read at most this many characters beyond it.
    static constexpr std::ptrdiff_t margin = 64;

    const char* end;   // of the window
    const char* limit; // no step begins here or later

    Cursor(const TextPlace& place, const char* windowEnd) noexcept
        : TextPlace(place), end(windowEnd), limit(windowEnd - place.at > margin ? windowEnd - margin : place.at) {}

    [[nodiscard]] const TextPlace& place() const noexcept { return *this; }
    [[nodiscard]] bool isNearEnd() const noexcept { return at >= limit; }

    [[nodiscard]] bool accept(char c) noexcept {
        const bool isThere = *at == c;
        at += isThere ? 1 : 0;
        return isThere;
    }

    // Mostly there is one space, or none.
    void blanks() noexcept {
        at += *at == ' ' ? 1 : 0;
        if (isIn(*at, asciiBlank)) [[unlikely]]
            moreBlanks();
    }

    void moreBlanks() noexcept {
        for (; at < limit && isIn(*at, asciiBlank); ++at)
            if (*at == '\n') {
                ++line;
                lineStart = lowerHalf(at);
            }
    }

    [[nodiscard]] bool comment(std::string_view& out) noexcept {
        const char* const first = at;
        while (at < limit && *at != '\n' && *at != '\r' && !isIn(*at, foreignChar) && *at != char(endOfText))
            ++at;
        out = {first, at};
        return !isNearEnd() && (*at == '\n' || *at == '\r');
    }

    // A word of letters, digits and underscores, except the literals, which are no identifiers.
    [[nodiscard]] bool identifier(std::string_view& out) noexcept {
        const char* const first = at;
        if (!isIn(*first, identifierChar) || String::isDigit(*first))
            return false;
        at += identifierLength(at);
        if (at == first + 16)
            while (at < limit && isIn(*at, identifierChar))
                ++at;
        out = {first, at};
        return !isNearEnd() && !isLiteral(out);
    }

    [[nodiscard]] bool semicolon() noexcept {
        blanks();
        return !isNearEnd() && accept(';');
    }

    [[nodiscard]] bool declaration(PlainStatement& out) noexcept {
        out.kind = Kind::Declaration;
        out.word = out.node;
        blanks();
        if (isStatementKeyword(out.word) || isNearEnd() || !identifier(out.node))
            return false;
        blanks();
        out.isWith = accept(':');
        return out.isWith || accept(';');
    }

    [[nodiscard]] bool assignment(PlainStatement& out) noexcept {
        blanks();
        if (accept('='))
            return value(out) && semicolon();
        return accept('|') && accept('=') && connection(out) && semicolon();
    }

    [[nodiscard]] bool connection(PlainStatement& out) noexcept {
        out.kind = Kind::Connection;
        blanks();
        if (isNearEnd() || !identifier(out.word) || !accept('.') || !identifier(out.output))
            return false;
        out.linkEnd = positionBefore();
        return true;
    }

    [[nodiscard]] bool value(PlainStatement& out) noexcept {
        out.kind = Kind::Value;
        blanks();
        if (isNearEnd())
            return false;
        if (String::isDigit(*at) || *at == '-')
            return number(out);
        return *at == '"' ? string(out) : keywordOrReference(out);
    }

    [[nodiscard]] bool number(PlainStatement& out) noexcept {
        bool isReal = false;
        const char* const next = takePlainNumber(at, end, out.integer, out.reals[0], isReal);
        if (!next || isIn(*next, numberChar))
            return false;
        out.type = isReal ? AttrType::Real : AttrType::Int;
        at = next;
        return true;
    }

    [[nodiscard]] bool string(PlainStatement& out) noexcept {
        out.type = AttrType::String;
        out.hasEscapes = false;
        const char* const first = ++at;
        while (at < limit) {
            const std::size_t length = plainTextLength(at);
            at += length;
            if (length == 16)
                continue;
            if (*at != '\\')
                break;
            out.hasEscapes = true;
            if (!String::isPrintable(at[1]))
                return false;
            at += 2;
        }
        out.word = {first, at};
        return !isNearEnd() && accept('"');
    }

    // `true`, `false`, a list of components or the name of a node.
    [[nodiscard]] bool keywordOrReference(PlainStatement& out) noexcept {
        const char* const first = at;
        if (identifier(out.word)) {
            out.type = *at == '(' ? scalarType(out.word) : AttrType::Null;
            if (out.type != AttrType::Null)
                return components(out);
            out.kind = Kind::Reference;
            out.linkEnd = positionBefore();
            return true;
        }
        const u64 literal = keywordNumber({first, at});
        out.type = AttrType::Bool;
        out.integer = literal == keyword("true") ? 1 : 0;
        return literal == keyword("true") || literal == keyword("false");
    }

    [[nodiscard]] bool components(PlainStatement& out) noexcept {
        const u32 count = componentCount(out.type);
        u32 read = 0;
        ++at;
        for (;;) {
            separators();
            if (isNearEnd())
                return false;
            if (accept(')'))
                break;
            if (read == count)
                return false;
            const char* const next = takePlainNumber(at, end, out.reals[read++]);
            if (!next || !(isIn(*next, asciiBlank) || *next == ',' || *next == ')'))
                return false;
            at = next;
        }
        if (read == 3 && out.type == AttrType::Rgba)
            out.reals[read++] = 1;
        return read == count;
    }

    void separators() noexcept {
        for (blanks(); at < limit && accept(',');)
            blanks();
    }

    [[nodiscard]] bool statement(PlainStatement& out) noexcept {
        if (isNearEnd())
            return false;
        moreBlanks();
        out.comments = place();
        for (std::string_view text; !isNearEnd() && *at == '#'; blanks())
            if (!comment(text))
                return false;
        if (isNearEnd())
            return false;
        out.begin = place();
        out.node = {};
        if (*at != '.' && !identifier(out.node))
            return false;
        const bool isRead = accept('.') ? identifier(out.name) && assignment(out) : declaration(out);
        out.end = place();
        return isRead;
    }
};

} // namespace

[[gnu::flatten]] bool PlainScanner::scan(PlainStatement& out) noexcept {
    Cursor cursor(place_, end_);
    const bool isPlain = cursor.statement(out);
    place_ = cursor.place();
    return isPlain;
}

bool PlainScanner::comment(std::string_view& out) noexcept {
    Cursor cursor(place_, end_);
    const bool isWhole = cursor.comment(out);
    place_ = cursor.place();
    return isWhole;
}

void PlainScanner::blanks() noexcept {
    Cursor cursor(place_, end_);
    cursor.moreBlanks();
    place_ = cursor.place();
}

bool PlainScanner::areTokensAhead() noexcept {
    Cursor cursor(place_, end_);
    for (int i = 0; i < 3; ++i) {
        cursor.moreBlanks();
        if (cursor.isNearEnd())
            return false;
        std::string_view text;
        if (*cursor.at == '#' && cursor.comment(text))
            continue;
        const char* const next = wordEnd(cursor.at, cursor.end);
        if (next == cursor.at)
            return false;
        cursor.at = next;
    }
    return !cursor.isNearEnd();
}

} // namespace vor::velmo_sdk::impl

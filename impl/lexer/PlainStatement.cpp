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

} // namespace

PlainScanner::PlainScanner(const TextPlace& place, const char* windowEnd) noexcept
    : place_(place), end_(windowEnd), limit_(windowEnd - place.at > margin ? windowEnd - margin : place.at) {}

bool PlainScanner::scan(PlainStatement& out) noexcept {
    blanks();
    out.comments = place_;
    for (std::string_view text; !isNearEnd() && *place_.at == '#'; blanks())
        if (!comment(text))
            return false;
    if (isNearEnd())
        return false;
    out.begin = place_;
    if (accept('.')) {
        out.node = {};
        return identifier(out.name) && assignment(out);
    }
    if (!identifier(out.node))
        return false;
    if (accept('.'))
        return identifier(out.name) && assignment(out);
    return declaration(out);
}

bool PlainScanner::comment(std::string_view& out) noexcept {
    const char* at = place_.at;
    while (at < limit_ && *at != '\n' && *at != '\r' && static_cast<u8>(*at) < 0x80)
        ++at;
    if (at >= limit_ || static_cast<u8>(*at) >= 0x80)
        return false;
    out = {place_.at, at};
    place_.at = at;
    return true;
}

bool PlainScanner::declaration(PlainStatement& out) noexcept {
    out.kind = Kind::Declaration;
    out.word = out.node;
    blanks();
    if (isStatementKeyword(out.word) || isNearEnd() || !identifier(out.node))
        return false;
    blanks();
    out.isWith = accept(':');
    if (!out.isWith && !accept(';'))
        return false;
    out.end = place_;
    return true;
}

bool PlainScanner::assignment(PlainStatement& out) noexcept {
    blanks();
    if (accept('='))
        return value(out) && semicolon(out);
    return accept('|') && accept('=') && connection(out) && semicolon(out);
}

bool PlainScanner::connection(PlainStatement& out) noexcept {
    out.kind = Kind::Connection;
    blanks();
    if (isNearEnd() || !identifier(out.word) || !accept('.') || !identifier(out.output))
        return false;
    out.linkEnd = place_.positionBefore();
    return true;
}

bool PlainScanner::value(PlainStatement& out) noexcept {
    out.kind = Kind::Value;
    blanks();
    if (isNearEnd())
        return false;
    const char c = *place_.at;
    if (String::isDigit(c) || c == '-')
        return number(out);
    return c == '"' ? string(out) : keywordOrReference(out);
}

bool PlainScanner::number(PlainStatement& out) noexcept {
    const char* next = takePlainNumber(place_.at, end_, out.integer);
    out.type = next && *next == '.' ? AttrType::Real : AttrType::Int;
    if (out.type == AttrType::Real)
        next = takePlainNumber(place_.at, end_, out.reals[0]);
    if (!next || isIn(*next, numberChar))
        return false;
    place_.at = next;
    return true;
}

bool PlainScanner::string(PlainStatement& out) noexcept {
    out.type = AttrType::String;
    out.hasEscapes = false;
    const char* at = place_.at + 1;
    for (; at < limit_ && *at != '"'; ++at) {
        if (!String::isPrintable(*at))
            return false;
        if (*at != '\\')
            continue;
        out.hasEscapes = true;
        if (!String::isPrintable(*++at))
            return false;
    }
    if (at >= limit_)
        return false;
    out.word = {place_.at + 1, at};
    place_.at = at + 1;
    return true;
}

bool PlainScanner::keywordOrReference(PlainStatement& out) noexcept {
    const char* const first = place_.at;
    if (identifier(out.word)) {
        out.type = *place_.at == '(' ? scalarType(out.word) : AttrType::Null;
        if (out.type != AttrType::Null)
            return components(out);
        out.kind = Kind::Reference;
        out.linkEnd = place_.positionBefore();
        return true;
    }
    const u64 literal = keywordNumber({first, place_.at});
    out.type = AttrType::Bool;
    out.integer = literal == keyword("true") ? 1 : 0;
    return literal == keyword("true") || literal == keyword("false");
}

bool PlainScanner::components(PlainStatement& out) noexcept {
    const u32 count = componentCount(out.type);
    u32 read = 0;
    ++place_.at;
    for (;;) {
        blanks();
        while (accept(','))
            blanks();
        if (isNearEnd())
            return false;
        if (accept(')'))
            break;
        if (read == count)
            return false;
        const char* const next = takePlainNumber(place_.at, end_, out.reals[read++]);
        if (!next || (!isIn(*next, asciiBlank) && *next != ',' && *next != ')'))
            return false;
        place_.at = next;
    }
    if (read == 3 && out.type == AttrType::Rgba)
        out.reals[read++] = 1;
    return read == count;
}

// Moves past a word of letters, digits and underscores. Fails for literals, which are no identifiers.
bool PlainScanner::identifier(std::string_view& out) noexcept {
    const char* const first = place_.at;
    if (!String::isLetter(*first) && *first != '_')
        return false;
    const char* at = first + identifierLength(first);
    if (at == first + 16)
        while (at < limit_ && isIn(*at, identifierChar))
            ++at;
    place_.at = at;
    out = {first, at};
    return !isNearEnd() && !isLiteral(out);
}

bool PlainScanner::semicolon(PlainStatement& out) noexcept {
    blanks();
    if (isNearEnd() || !accept(';'))
        return false;
    out.end = place_;
    return true;
}

void PlainScanner::blanks() noexcept {
    for (; place_.at < limit_ && isIn(*place_.at, asciiBlank); ++place_.at)
        if (*place_.at == '\n') {
            ++place_.line;
            place_.lineStart = TextPlace::lowerHalf(place_.at);
        }
}

bool PlainScanner::areTokensAhead() noexcept {
    for (int i = 0; i < 3; ++i) {
        blanks();
        if (isNearEnd())
            return false;
        std::string_view text;
        if (*place_.at == '#' && comment(text))
            continue;
        const char* const next = wordEnd(place_.at, limit_);
        if (next == place_.at)
            return false;
        place_.at = next;
    }
    return !isNearEnd();
}

} // namespace vor::velmo_sdk::impl

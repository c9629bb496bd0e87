// Tokens that end at a closing character: strings, lists and brackets.
#include "impl/lexer/Lexer.h"
#include "impl/lexer/ListText.h"
#include "impl/lexer/StringScanner.h"

namespace vor::velmo_sdk::impl {

namespace {

// Scans a BRACKETS token piece by piece, including the opening bracket.
class BracketScanner {
public:
    [[nodiscard]] ScanExtent scan(std::string_view piece) noexcept {
        for (std::size_t i = 0; i < piece.size(); ++i) {
            const char c = piece[i];
            if (c == ']')
                return {i + 1, ScanEnd::Closed};
            if (c == static_cast<char>(endOfText))
                return {i, ScanEnd::EndOfText};
            if (!isBracketChar(c))
                return {i, ScanEnd::BadCharacter};
        }
        return {piece.size(), ScanEnd::EndOfText};
    }
};

} // namespace

struct Lexer::ListKind {
    char open;
    char close;
    Token::Type type;
    const char* name;      // in the message for an end of input
    const char* shortName; // in the message for a bad character
};

// Consumes a token up to where the scanner ends it; `text` is valid until the next call.
template <class Scanner> ScanEnd Lexer::take(Scanner& scanner, std::string_view& text) {
    scratch_.clear();
    while (!isAtEnd()) {
        const char one = static_cast<char>(cur);
        const std::string_view characters = upcoming(one, std::string_view::npos);
        const ScanExtent extent = scanner.scan(characters);
        text = characters.substr(0, extent.length);
        const bool isWhole = extent.end == ScanEnd::Closed && scratch_.empty() && text.size() < characters.size();
        if (!isWhole) {
            scratch_ += text; // the window moves on
            text = scratch_;
        }
        consumePiece(extent.length);
        if (extent.end != ScanEnd::EndOfText)
            return extent.end;
    }
    return ScanEnd::EndOfText;
}

/// STRING ::= '"' ( any | escape )* '"'   ends at the first unescaped quote; kept as written
Token Lexer::string() {
    StringScanner scanner;
    std::string_view text;
    return take(scanner, text) == ScanEnd::Closed ? token(Token::Type::String, text) : unexpectedEof("STRING");
}

/// PARENS ::= '(' ( number-char | blank | ',' | bracket )* ')'   flattened: one space between elements
Token Lexer::parens() { return nestedList({'(', ')', Token::Type::Parens, "PARENS", "PAREN"}); }

/// BRACES ::= '{' ( number-char | blank | ',' | bracket )* '}'   flattened: one space between elements
/// bracket ::= '(' | ')' | '[' | ']' | '{' | '}'
Token Lexer::braces(ElementSink* sink) {
    const ListKind kind{'{', '}', Token::Type::Braces, "BRACES", "BRACE"};
    return sink ? listFor(*sink, kind) : nestedList(kind);
}

Token Lexer::nestedList(const ListKind& kind) {
    if (window().empty())
        return nestedListByCharacter(kind);
    ListScanner scanner(kind.open, kind.close);
    std::string_view text;
    switch (take(scanner, text)) {
    case ScanEnd::Closed:
        return isCanonical(text) ? token(kind.type, text) : here(kind.type, canonicalList(text));
    case ScanEnd::BadCharacter:
        return invalidListToken(kind.shortName);
    default:
        return unexpectedEof(kind.name);
    }
}

// The same for a source without a window.
Token Lexer::nestedListByCharacter(const ListKind& kind) {
    ds::Vector<char> text;
    u64 depth = 0;
    while (!isAtEnd()) {
        if (!isIn(cur, blankChar | numberChar | listPunctuation))
            return invalidListToken(kind.shortName);
        if (!text.isEmpty() && cur == kind.open) {
            consume();
            ++depth;
        } else if (depth == 0 || cur != kind.close) {
            list(text, kind.open, kind.close);
        } else {
            consume();
            --depth;
        }
        if (depth == 0 && cur == kind.close) {
            text.push(consume());
            return token(kind.type, text);
        }
    }
    return unexpectedEof(kind.name);
}

// Consumes one character of an element, an outer bracket, a separator or a run of blanks. The latter two become one
// space between elements and are dropped elsewhere.
void Lexer::list(ds::Vector<char>& text, char open, char close) {
    const bool isOuterBracket = isAtEnd() || cur == open || cur == close;
    if (isOuterBracket || !isIn(cur, blankChar | listPunctuation)) {
        text.push(consume());
        return;
    }
    if (isIn(cur, listPunctuation))
        consume();
    else
        while (isIn(cur, blankChar))
            consume();
    const bool isBetweenElements =
        !text.isEmpty() && text.last() != ' ' && text.last() != open && !isAtEnd() && cur != close;
    if (isBetweenElements)
        text.push(' ');
}

// The list `raw`, which includes its brackets, with one space between elements.
std::string_view Lexer::canonicalList(std::string_view raw) {
    ListFlattener flattener(raw.front(), raw.back());
    char* const text = texts_.allocate(raw.size());
    char* end = text;
    *end++ = raw.front();
    end = flattener.flatten(raw.substr(1, raw.size() - 2), end);
    *end++ = raw.back();
    return {text, end};
}

// Scans a list, but passes its elements to the sink, in pieces small enough to stay in the cache.
Token Lexer::listFor(ElementSink& sink, const ListKind& kind) {
    constexpr std::size_t pieceSize = 32 * 1024;
    ListScanner scanner(kind.open, kind.close);
    ListFlattener flattener(kind.open, kind.close);
    std::string buffer;
    const auto flattened = [&](std::string_view elements) {
        buffer.resize(elements.size() + 1);
        return std::string_view(buffer.data(), flattener.flatten(elements, buffer.data()));
    };
    bool isFirst = true;
    while (!isAtEnd()) {
        const char one = static_cast<char>(cur);
        const std::string_view characters = upcoming(one, pieceSize);
        const ScanExtent extent = scanner.scan(characters);
        const bool isClosed = extent.end == ScanEnd::Closed;
        std::string_view elements = characters.substr(0, extent.length);
        if (isFirst)
            elements.remove_prefix(1);
        if (isClosed)
            elements.remove_suffix(1);
        isFirst = false;
        if (scanner.isFlat())
            flattener.follow(elements);
        else
            elements = flattened(elements);
        sink.take(elements);
        consumePiece(extent.length);
        if (extent.end == ScanEnd::BadCharacter)
            return invalidListToken(kind.shortName);
        if (isClosed)
            return here(kind.type, "{}");
    }
    return unexpectedEof(kind.name);
}

/// BRACKETS ::= '[' ( digit | '*' | '[' | blank )* ']'   ends at the first ']'; kept as written
Token Lexer::brackets() {
    BracketScanner scanner;
    std::string_view text;
    switch (take(scanner, text)) {
    case ScanEnd::Closed:
        return token(Token::Type::Brackets, text);
    case ScanEnd::BadCharacter:
        return invalidListToken("BRACKET");
    default:
        return unexpectedEof("BRACKETS");
    }
}

} // namespace vor::velmo_sdk::impl

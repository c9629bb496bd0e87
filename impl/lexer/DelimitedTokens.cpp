// Tokens that end at a closing character: strings, lists and brackets.
#include "impl/lexer/Lexer.h"
#include "impl/lexer/ListText.h"

namespace vor::velmo_sdk::impl {

struct Lexer::ListKind {
    char open;
    char close;
    Token::Type type;
    const char* name;      // in the message for an end of input
    const char* shortName; // in the message for a bad character
};

// The elements go to a sink in pieces of this size, small enough to stay in the cache.
static constexpr std::size_t pieceSize = 32 * 1024;

/// STRING ::= '"' ( any | escape )* '"'   ends at the first unescaped quote; kept as written
Token Lexer::string() {
    bool isEscaped = true; // the opening quote does not end the string either
    const std::size_t length = lengthOf([&](const char* at, const char* end) {
        for (; at != end && *at != static_cast<char>(endOfText) && (*at != '"' || isEscaped); ++at)
            isEscaped = *at == '\\' && !isEscaped;
        return at;
    });
    if (characterAt(length) == '"')
        return here(Token::Type::String, take(length + 1));
    take(length);
    return unexpectedEof("STRING");
}

/// BRACKETS ::= '[' ( digit | '*' | '[' | blank )* ']'   ends at the first ']'; kept as written
Token Lexer::brackets() {
    const std::size_t length =
        lengthOf([](const char* at, const char* end) { return std::find_if_not(at, end, isBracketChar); });
    if (characterAt(length) == ']')
        return here(Token::Type::Brackets, take(length + 1));
    take(length);
    return isAtEnd() ? unexpectedEof("BRACKETS") : invalidListToken("BRACKET");
}

/// PARENS ::= '(' ( number-char | blank | ',' | bracket )* ')'   flattened: one space between elements
Token Lexer::parens() { return listIn({'(', ')', Token::Type::Parens, "PARENS", "PAREN"}); }

/// BRACES ::= '{' ( number-char | blank | ',' | bracket )* '}'   flattened: one space between elements
/// bracket ::= '(' | ')' | '[' | ']' | '{' | '}'
Token Lexer::braces(ElementSink* sink) {
    const ListKind kind{'{', '}', Token::Type::Braces, "BRACES", "BRACE"};
    return sink ? listFor(*sink, kind) : listIn(kind);
}

Token Lexer::listIn(const ListKind& kind) {
    const std::size_t length = canonicalLength(window(), kind.close);
    return length != 0 ? here(kind.type, take(length)) : normalisedList(kind, {}, nullptr);
}

// Passes the elements of a list in braces to the sink as they are. A list inside the list is normalised first, because
// it neither separates elements nor belongs to one.
Token Lexer::listFor(ElementSink& sink, const ListKind& kind) {
    consume();
    while (!isAtEnd()) {
        const std::string_view piece = window().substr(0, pieceSize);
        const std::size_t length = flatLength(piece);
        sink.take(piece.substr(0, length));
        take(length);
        if (length == piece.size() || isAtEnd())
            continue;
        if (cur == kind.open)
            return normalisedList(kind, {isIn(prev, numberChar) ? static_cast<char>(prev) : ' '}, &sink);
        if (cur != kind.close)
            return invalidListToken(kind.shortName);
        consume();
        return here(kind.type, "{}");
    }
    return unexpectedEof(kind.name);
}

// The rest of a list with one space between elements. `text` begins with what comes before: nothing, or, if there is a
// sink, the character that the sink received last.
Token Lexer::normalisedList(const ListKind& kind, ds::Vector<char> text, ElementSink* sink) {
    u64 depth = 0;
    const auto pass = [&] {
        sink->take({text.data() + 1, text.size() - 1});
        text = {text.last()};
    };
    while (!isAtEnd()) {
        if (!isNumberChar() && !isIn(cur, blankChar | listPunctuation))
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
        const bool isClosed = depth == 0 && cur == kind.close;
        if (sink && (isClosed || text.size() > pieceSize))
            pass();
        if (isClosed) {
            text.push(consume());
            return sink ? here(kind.type, "{}") : token(kind.type, text);
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

} // namespace vor::velmo_sdk::impl

#include "impl/lexer/Lexer.h"

#include "impl/Messages.h"

namespace vor::velmo_sdk::impl {

namespace {

constexpr bool isBlank(signed char c) noexcept {
    const char character = static_cast<char>(c);
    return String::isSpace(character) || !String::isPrintable(character);
}

constexpr bool isListPunctuation(signed char c) noexcept {
    return c == '(' || c == ')' || c == '[' || c == ']' || c == '{' || c == '}' || c == ',';
}

i32 wrappingIncrement(i32 number) noexcept { return static_cast<i32>(static_cast<u32>(number) + 1); }

} // namespace

struct Lexer::ListKind {
    char open;
    char close;
    Token::Type type;
    const char* name;      // in the message for an end of input
    const char* shortName; // in the message for a bad character
};

void Lexer::advance() noexcept {
    if (prev == '\n') {
        line = wrappingIncrement(line);
        column = 1;
    } else {
        column = wrappingIncrement(column);
    }
    prev = cur;
    pos = wrappingIncrement(pos);
}

Token Lexer::nextToken() {
    while (!isAtEnd() && isBlank(cur))
        consume();
    if (isAtEnd())
        return eof();
    scratch_.clear();
    switch (cur) {
    case '"':
        return string();
    case '#':
        return comment();
    case '(':
        return parens();
    case '{':
        return braces();
    case '[':
        return brackets();
    case '\'':
        return token(Token::Type::Quote);
    case '*':
        return token(Token::Type::Star);
    case '+':
        return token(Token::Type::Plus);
    case ',':
        return token(Token::Type::Comma);
    case '.':
        return token(Token::Type::Dot);
    case '/':
        return token(Token::Type::Slash);
    case ':':
        return token(Token::Type::Colon);
    case ';':
        return token(Token::Type::Semicolon);
    case '=':
        return token(Token::Type::Equals);
    case '\\':
        return token(Token::Type::Backslash);
    case '|':
        return token(Token::Type::Pipe);
    default:
        break;
    }
    const char c = static_cast<char>(cur);
    if (String::isLetter(c) || c == '_')
        return id();
    if (c == '-' || String::isHexDigit(c))
        return number();
    return invalidToken();
}

/// comment ::= '#' any*   up to the end of the line (LF or CR) or of the text
Token Lexer::comment() {
    do
        scratch_.push(consume());
    while (!isAtEnd() && cur != '\n' && cur != '\r');
    return token(Token::Type::Comment, scratch_);
}

/// string ::= '"' ( any but '"' and '\' | '\' any )* '"'   kept as written, quotes included
Token Lexer::string() {
    while (true) {
        if (isAtEnd())
            return unexpectedEof("STRING");
        scratch_.push(consume());
        // A second backslash completes a pair, which cannot escape what follows; a quote behind a lone
        // backslash is escaped. Either way the character is taken here and the next one looked at.
        const bool isPair = cur == '\\' && prev == '\\';
        const bool isEscapedQuote = cur == '"' && prev == '\\';
        if (isPair || isEscapedQuote)
            scratch_.push(consume());
        if (cur == '"')
            break;
    }
    scratch_.push(consume());
    return token(Token::Type::String, scratch_);
}

/// parens ::= '(' ( number-char | blank | ',' | bracket )* ')'   flattened: one space between elements
Token Lexer::parens() { return nestedList({'(', ')', Token::Type::Parens, "PARENS", "PAREN"}); }

/// braces ::= '{' ( number-char | blank | ',' | bracket )* '}'   flattened: one space between elements
Token Lexer::braces() { return nestedList({'{', '}', Token::Type::Braces, "BRACES", "BRACE"}); }

Token Lexer::nestedList(const ListKind& kind) {
    u64 depth = 0;
    while (true) {
        if (isAtEnd())
            return unexpectedEof(kind.name);
        if (!isBlank(cur) && !isListPunctuation(cur) && !isNumberChar())
            return invalidListToken(kind.shortName);
        if (!scratch_.isEmpty() && cur == kind.open) {
            consume();
            ++depth;
        } else if (depth == 0 || cur != kind.close) {
            list(scratch_, kind.open, kind.close);
        } else {
            consume();
            --depth;
        }
        if (depth == 0 && cur == kind.close) {
            scratch_.push(consume());
            return token(kind.type, scratch_);
        }
    }
}

// Takes one character of a list, or a whole run of blanks. Separators become one space, and none
// stands next to the enclosing characters.
void Lexer::list(ds::Vector<char>& text, char open, char close) {
    const bool isSeparator = isListPunctuation(cur) && cur != open && cur != close;
    if (!isSeparator && (isAtEnd() || !isBlank(cur))) {
        text.push(consume());
        return;
    }
    if (isSeparator)
        consume();
    else
        while (!isAtEnd() && isBlank(cur))
            consume();
    const char last = text.isEmpty() ? open : text.last();
    if (!isBlank(static_cast<signed char>(last)) && cur != close && last != open)
        text.push(' ');
}

/// brackets ::= '[' ( digit | '*' | '[' | blank )* ']'   kept as written; the first ']' ends it
Token Lexer::brackets() {
    while (true) {
        if (isAtEnd())
            return unexpectedEof("BRACKETS");
        const char c = static_cast<char>(cur);
        if (c != '[' && c != ']' && c != '*' && !isBlank(cur) && !String::isDigit(c))
            return invalidListToken("BRACKET");
        scratch_.push(consume());
        if (cur == ']') {
            scratch_.push(consume());
            return token(Token::Type::Brackets, scratch_);
        }
    }
}

/// id ::= ( letter | '_' ) ( letter | '_' | digit )*   but for true, false and null, in any case
Token Lexer::id() {
    if (isAtEnd())
        return unexpectedEof("ID");
    do
        scratch_.push(consume());
    while (String::isLetter(static_cast<char>(cur)) || cur == '_' || String::isDigit(static_cast<char>(cur)));
    Token word = token(Token::Type::Id, scratch_);
    struct Keyword {
        const char* text;
        Token::Type type;
    };
    static constexpr Keyword keywords[] = {
        {"true", Token::Type::True}, {"false", Token::Type::False}, {"null", Token::Type::Null}};
    for (const Keyword& keyword : keywords) {
        if (word.text.compareNoCase(keyword.text) == 0) {
            word.type = keyword.type;
            word.text = keyword.text;
        }
    }
    return word;
}

/// number ::= ( '-' | digit ) number-char*   Real if any of . f n a i (in either case) is in it, else Int
/// number-char ::= digit | '+' | '-' | '.' | 'A'..'F' | 'a'..'f' | 'I' | 'N' | 'U' | 'i' | 'n' | 'u'
Token Lexer::number() {
    if (isAtEnd())
        return unexpectedEof("NUMBER");
    bool isReal = false;
    do {
        const char c = String::lower(static_cast<char>(cur));
        isReal = isReal || c == '.' || c == 'f' || c == 'n' || c == 'a' || c == 'i';
        scratch_.push(consume());
    } while (isNumberChar());
    return token(isReal ? Token::Type::Real : Token::Type::Int, scratch_);
}

bool Lexer::isNumberChar() const noexcept {
    const char c = String::lower(static_cast<char>(cur));
    return String::isHexDigit(c) || c == '+' || c == '-' || c == '.' || c == 'i' || c == 'n' || c == 'u';
}

Token Lexer::token(Token::Type type) {
    const String text(consume());
    return message(type, text);
}

Token Lexer::token(Token::Type type, const ds::Vector<char>& text) const {
    return message(type, String(text.data(), text.size()));
}

// An error consumes nothing, so its position is that of the character before it.
Token Lexer::message(Token::Type type, const String& text) const { return {type, text, line, column}; }

Token Lexer::eof() const { return message(Token::Type::Eof, messages::endOfInput); }

Token Lexer::invalidToken() const {
    return message(Token::Type::Invalid, String::format(messages::invalidToken, line, column, cur));
}

Token Lexer::unexpectedEof(const String& what) const {
    return message(Token::Type::Eof, String::format(messages::unexpectedEof, what.buf()));
}

Token Lexer::invalidListToken(const String& what) const {
    return message(Token::Type::Invalid, String::format(messages::invalidListToken, what.buf(), line, column, cur));
}

} // namespace vor::velmo_sdk::impl

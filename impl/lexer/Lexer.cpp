#include "impl/lexer/Lexer.h"

#include "impl/Messages.h"
#include "impl/lexer/GatheredText.h"

#include <algorithm>
#include <cstring>

namespace vor::velmo_sdk::impl {

namespace {

// Positions wrap around beyond 2 GiB.
i32 wrappingAdd(i32 number, u64 more) noexcept {
    return static_cast<i32>(static_cast<u32>(number) + static_cast<u32>(more));
}

// Counted in bytes, of which a vector register holds many, and so at most 255 characters at a time.
u64 countLineFeeds(std::string_view text) noexcept {
    u64 count = 0;
    while (!text.empty()) {
        u8 some = 0;
        const std::string_view part = text.substr(0, 240);
        for (const char c : part)
            some = static_cast<u8>(some + (c == '\n' ? 1 : 0));
        count += some;
        text.remove_prefix(part.size());
    }
    return count;
}

// A list of more bytes is read from where it stands; for a shorter one that would not pay.
constexpr std::size_t longList = 256;

} // namespace

struct Lexer::ListKind {
    char open;
    char close;
    Token::Type type;
    const char* name;      // in the message for an end of input
    const char* shortName; // in the message for a bad character
};

void Lexer::advance() noexcept {
    line = wrappingAdd(line, prev == '\n' ? 1 : 0);
    column = prev == '\n' ? 1 : wrappingAdd(column, 1);
    prev = cur;
    pos = wrappingAdd(pos, 1);
}

// Consumes characters of the window: what advance() would do for each of them, once for all.
void Lexer::consumeRun(std::size_t count) {
    const char* run = at_;
    const std::size_t before = count - 1; // a line feed counts when the next character is consumed
    const auto* lastFeed = static_cast<const char*>(memrchr(run, '\n', before));
    if (!lastFeed)
        return consumeInLine(count);
    line = wrappingAdd(line, (prev == '\n' ? 1U : 0U) + countLineFeeds({run, lastFeed + 1}));
    column = wrappingAdd(0, static_cast<u64>(run + before - lastFeed));
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(run[before]);
    step(count);
}

// The same for characters of which none but the last may be a line feed.
void Lexer::consumeInLine(std::size_t count) {
    line = wrappingAdd(line, prev == '\n' ? 1 : 0);
    column = wrappingAdd(prev == '\n' ? 0 : column, count);
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(at_[count - 1]);
    step(count);
}

// Consumes characters as long as they belong, and returns them; the view holds until the next call.
// `inLine` promises that none of them is a line feed.
template <class Belongs> std::string_view Lexer::takeWhile(Belongs belongs, bool inLine) {
    scratch_.clear();
    while (!isAtEnd() && belongs(static_cast<char>(cur))) {
        const std::string_view all = window();
        if (all.empty()) {
            scratch_ += consume();
            continue;
        }
        std::size_t count = 1;
        while (count < all.size() && belongs(all[count]))
            ++count;
        const bool isWhole = scratch_.empty() && count < all.size();
        if (!isWhole)
            scratch_ += all.substr(0, count); // the window will show other characters
        if (inLine)
            consumeInLine(count);
        else
            consumeRun(count);
        if (isWhole)
            return all.substr(0, count);
    }
    return scratch_;
}

void Lexer::skipBlanks() {
    while (isIn(cur, blankChar)) {
        if (window().empty()) {
            consume();
            continue;
        }
        // Up to the first line feed, so that most positions are moved along one line.
        const char* blank = at_;
        while (*blank != '\n' && blank + 1 != end_ && isIn(blank[1], blankChar))
            ++blank;
        consumeInLine(static_cast<std::size_t>(blank + 1 - at_));
    }
}

Token Lexer::nextToken(ElementSink* sink) {
    skipBlanks();
    if (isAtEnd())
        return eof();
    switch (cur) {
    case '"':
        return string();
    case '#':
        return comment();
    case '(':
        return parens();
    case '{':
        return braces(sink);
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
    const std::string_view text =
        takeWhile([](char c) { return c != '\n' && c != '\r' && c != static_cast<char>(endOfText); }, true);
    return token(Token::Type::Comment, text);
}

/// string ::= '"' ( any but '"' and '\' | '\' any )* '"'   kept as written, quotes included
Token Lexer::string() {
    std::string text;
    while (true) {
        if (isAtEnd())
            return unexpectedEof("STRING");
        text += consume();
        // A second backslash completes a pair, which cannot escape what follows; a quote behind a lone
        // backslash is escaped. Either way the character is taken here and the next one looked at.
        const bool isPair = cur == '\\' && prev == '\\';
        const bool isEscapedQuote = cur == '"' && prev == '\\';
        if (isPair || isEscapedQuote)
            text += consume();
        text += takeWhile([](char c) { return c != '"' && c != '\\' && c != static_cast<char>(endOfText); }, false);
        if (cur == '"')
            break;
    }
    text += consume();
    return token(Token::Type::String, text);
}

/// parens ::= '(' ( number-char | blank | ',' | bracket )* ')'   flattened: one space between elements
Token Lexer::parens() { return nestedList({'(', ')', Token::Type::Parens, "PARENS", "PAREN"}); }

/// braces ::= '{' ( number-char | blank | ',' | bracket )* '}'   flattened: one space between elements
Token Lexer::braces(ElementSink* sink) {
    const ListKind kind{'{', '}', Token::Type::Braces, "BRACES", "BRACE"};
    return sink ? listFor(*sink, kind) : nestedList(kind);
}

// The characters at hand, or just `one`, which is `cur`.
std::string_view Lexer::upcoming(const char& one, std::size_t most) const {
    return window().empty() ? std::string_view(&one, 1) : window().substr(0, most);
}

void Lexer::consumePiece(std::size_t count) {
    if (count == 0)
        return;
    if (window().empty())
        consume();
    else
        consumeRun(count);
}

Token Lexer::nestedList(const ListKind& kind) {
    GatheredText gathered; // the list so far, if no window shows it as a whole
    ListScanner scanner(kind.open, kind.close);
    while (!isAtEnd()) {
        const char one = static_cast<char>(cur);
        const std::string_view characters = upcoming(one, std::string_view::npos);
        const ListExtent extent = scanner.scan(characters);
        const std::string_view piece = characters.substr(0, extent.length);
        const bool isWhole = extent.end == ListExtent::End::Closed && gathered.isEmpty() && owner();
        if (!isWhole)
            gathered.append(piece);
        consumePiece(piece.size());
        if (extent.end == ListExtent::End::BadCharacter)
            return invalidListToken(kind.shortName);
        if (extent.end == ListExtent::End::Closed && isWhole)
            return message(kind.type, listText(piece, owner()));
        if (extent.end == ListExtent::End::Closed) {
            if (gathered.view().size() <= longList)
                return message(kind.type, canonicalList(gathered.view()));
            const auto kept = std::make_shared<const GatheredText>(std::move(gathered));
            return message(kind.type, listText(kept->view(), kept));
        }
    }
    return unexpectedEof(kind.name);
}

// The same, but the elements go to the sink piece by piece, each while it is still in the cache.
Token Lexer::listFor(ElementSink& sink, const ListKind& kind) {
    constexpr std::size_t pieceSize = 32 * 1024;
    ListScanner scanner(kind.open, kind.close);
    ListFlattener flattener(kind.open, kind.close);
    bool isFirst = true;
    while (!isAtEnd()) {
        const char one = static_cast<char>(cur);
        const std::string_view characters = upcoming(one, pieceSize);
        const ListExtent extent = scanner.scan(characters);
        const bool isClosed = extent.end == ListExtent::End::Closed;
        std::string_view elements = characters.substr(0, extent.length);
        if (isFirst)
            elements.remove_prefix(1);
        if (isClosed)
            elements.remove_suffix(1);
        isFirst = false;
        if (extent.isFlat)
            flattener.follow(elements);
        sink.take(extent.isFlat ? elements : flattener.flatten(elements));
        consumePiece(extent.length);
        if (extent.end == ListExtent::End::BadCharacter)
            return invalidListToken(kind.shortName);
        if (isClosed) {
            const char brackets[] = {kind.open, kind.close};
            return message(kind.type, String(brackets, sizeof brackets));
        }
    }
    return unexpectedEof(kind.name);
}

TokenText Lexer::listText(std::string_view raw, std::shared_ptr<const void> owner) {
    if (raw.size() <= longList)
        return canonicalList(raw);
    return std::make_shared<const ListText>(raw, std::move(owner));
}

/// brackets ::= '[' ( digit | '*' | '[' | blank )* ']'   kept as written; the first ']' ends it
Token Lexer::brackets() {
    std::string text;
    while (true) {
        if (isAtEnd())
            return unexpectedEof("BRACKETS");
        const char c = static_cast<char>(cur);
        if (c != '[' && c != ']' && c != '*' && !isIn(c, blankChar) && !String::isDigit(c))
            return invalidListToken("BRACKET");
        text += consume();
        if (cur == ']') {
            text += consume();
            return token(Token::Type::Brackets, text);
        }
    }
}

/// id ::= ( letter | '_' ) ( letter | '_' | digit )*   but for true, false and null, in any case
Token Lexer::id() {
    if (isAtEnd())
        return unexpectedEof("ID");
    const String word = takeWhile([](char c) { return isIn(c, identifierChar); }, true);
    struct Keyword {
        const char* text;
        Token::Type type;
    };
    static constexpr Keyword keywords[] = {
        {"true", Token::Type::True}, {"false", Token::Type::False}, {"null", Token::Type::Null}};
    for (const Keyword& keyword : keywords)
        if (String::lower(word[0]) == keyword.text[0] && word.compareNoCase(keyword.text) == 0)
            return message(keyword.type, String(keyword.text));
    return message(Token::Type::Id, word);
}

/// number ::= ( '-' | digit ) number-char*   Real if any of . f n a i (in either case) is in it, else Int
/// number-char ::= digit | '+' | '-' | '.' | 'A'..'F' | 'a'..'f' | 'I' | 'N' | 'U' | 'i' | 'n' | 'u'
Token Lexer::number() {
    if (isAtEnd())
        return unexpectedEof("NUMBER");
    const std::string_view text = takeWhile([](char c) { return isIn(c, numberChar); }, true);
    const bool isReal = text.find_first_of(".fFnNaAiI") != std::string_view::npos;
    return token(isReal ? Token::Type::Real : Token::Type::Int, text);
}

Token Lexer::token(Token::Type type) {
    const String text(consume());
    return message(type, text);
}

Token Lexer::token(Token::Type type, std::string_view text) const { return message(type, String(text)); }

// An error consumes nothing, so its position is that of the character before it.
Token Lexer::message(Token::Type type, TokenText text) const { return {type, std::move(text), line, column}; }

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

#include "impl/lexer/Lexer.h"

#include "impl/Messages.h"
#include "impl/lexer/ListText.h"
#include "impl/lexer/StringScanner.h"
#include "impl/lexer/Word.h"
#include "scene/syntax/Keyword.h"

#include <algorithm>
#include <cstring>

namespace vor::velmo_sdk::impl {

namespace {

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

// Goes through brackets that are read piece by piece, beginning with the opening one.
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

// Consumes characters as long as they belong, and returns them; the view holds until the next call. None of
// them may be a line feed.
template <class Belongs> std::string_view Lexer::takeWhile(Belongs belongs) {
    const char* behind = at_;
    while (behind != end_ && belongs(*behind))
        ++behind;
    if (behind == end_)
        return gatherWhile(belongs); // the window may go on, or there is none
    const std::string_view run(at_, behind);
    if (!run.empty())
        consumeInLine(run.size());
    return run;
}

template <class Belongs> std::string_view Lexer::gatherWhile(Belongs belongs) {
    scratch_.clear();
    while (!isAtEnd() && belongs(static_cast<char>(cur))) {
        const char* behind = at_;
        while (behind != end_ && belongs(*behind))
            ++behind;
        if (behind == at_) {
            scratch_ += consume();
        } else {
            scratch_.append(at_, behind);
            consumeInLine(static_cast<std::size_t>(behind - at_));
        }
    }
    return scratch_;
}

// Consumes the token that a scanner goes through, as far as it does; `text` holds until the next call.
template <class Scanner> ScanEnd Lexer::take(Scanner& scanner, std::string_view& text) {
    scratch_.clear();
    while (!isAtEnd()) {
        const char one = static_cast<char>(cur);
        const std::string_view characters = upcoming(one, std::string_view::npos);
        const ScanExtent extent = scanner.scan(characters);
        text = characters.substr(0, extent.length);
        const bool isWhole = extent.end == ScanEnd::Closed && scratch_.empty() && text.size() < characters.size();
        if (!isWhole) {
            scratch_ += text; // the window will show other characters
            text = scratch_;
        }
        consumePiece(extent.length);
        if (extent.end != ScanEnd::EndOfText)
            return extent.end;
    }
    return ScanEnd::EndOfText;
}

// The characters at hand, or just `one`, which is `cur`.
std::string_view Lexer::upcoming(const char& one, std::size_t most) const {
    return at_ == end_ ? std::string_view(&one, 1) : window().substr(0, most);
}

void Lexer::consumePiece(std::size_t count) {
    if (count == 0)
        return;
    if (at_ == end_)
        consume();
    else
        consumeRun(count);
}

void Lexer::skipBlanks() {
    do {
        if (at_ == end_) {
            const char blank = static_cast<char>(cur);
            countForeign({&blank, 1});
            consume();
            continue;
        }
        // Up to the first line feed, so that most positions are moved along one line.
        const char* blank = at_;
        while (*blank != '\n' && blank + 1 != end_ && isIn(blank[1], blankChar))
            ++blank;
        countForeign({at_, blank + 1});
        consumeInLine(static_cast<std::size_t>(blank + 1 - at_));
    } while (isIn(cur, blankChar));
}

// Blanks that are about to be consumed.
void Lexer::countForeign(std::string_view blanks) {
    if (std::ranges::none_of(blanks, [](char c) { return isIn(c, foreignChar); }))
        return;
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    TextPosition place = nextPosition();
    for (std::size_t i = 0; i < blanks.size(); ++i) {
        if (isIn(blanks[i], foreignChar) && foreignBytes_++ == 0)
            firstForeignByte_ = place;
        // A mark at the start counts for nothing, once all of it has been seen there.
        const bool goesOn = markLength_ < byteOrderMark.size() && u64(markLength_) + 1 == foreignBytes_ &&
                            static_cast<u64>(pos) + i == markLength_ && blanks[i] == byteOrderMark[markLength_];
        if (goesOn && ++markLength_ == byteOrderMark.size())
            foreignBytes_ = 0;
        place = blanks[i] == '\n' ? TextPosition{wrappingAdd(place.line, 1), 1}
                                  : TextPosition{place.line, wrappingAdd(place.column, 1)};
    }
}

Token Lexer::token(Token::Type type, std::string_view text) const {
    const bool isShown = isWindowKept_ && text.data() != scratch_.data();
    return here(type, isShown ? text : texts_.keep(text));
}

Token Lexer::idToken(std::string_view word) {
    switch (keywordNumber(word)) {
    case keyword("true"):
        return here(Token::Type::True, "true");
    case keyword("false"):
        return here(Token::Type::False, "false");
    case keyword("null"):
        return here(Token::Type::Null, "null");
    default:
        return token(Token::Type::Id, word);
    }
}

Token Lexer::numberToken(std::string_view text) {
    const bool isReal = std::ranges::any_of(text, [](char c) { return isIn(c, realChar); });
    return token(isReal ? Token::Type::Real : Token::Type::Int, text);
}

// Takes a word (an identifier, a number, a punctuation character) and the blanks before it, if the window
// goes on behind it, and brings the position up to date once for all. Most tokens are words in sight.
bool Lexer::takeShownWord(std::string_view& word) {
    const char* at = at_;
    const char* lineStart = nullptr; // behind the last line feed among the blanks
    u64 feeds = 0;
    for (; at != end_ && isIn(*at, asciiBlank); ++at)
        if (*at == '\n') {
            lineStart = at + 1;
            ++feeds;
        }
    if (end_ - at <= 16)
        return false;
    const char* behind = wordEnd(at, end_);
    if (behind == at || behind == end_)
        return false;
    word = {at, behind};
    const auto count = static_cast<std::size_t>(behind - at_);
    line = wrappingAdd(line, (prev == '\n' ? 1U : 0U) + feeds);
    column = feeds != 0 ? static_cast<i32>(behind - lineStart) : wrappingAdd(prev == '\n' ? 0 : column, count);
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(behind[-1]);
    at_ = behind;
    cur = static_cast<signed char>(*behind);
    return true;
}

Token Lexer::wordToken(std::string_view word) {
    const char first = word[0];
    if (isIn(first, punctuationChar))
        return token(punctuationType(first), word);
    return String::isDigit(first) || first == '-' ? numberToken(word) : idToken(word);
}

Token Lexer::nextToken(ElementSink* sink) {
    std::string_view word;
    if (takeShownWord(word))
        return wordToken(word);
    if (isIn(cur, blankChar))
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
    default:
        break;
    }
    const char c = static_cast<char>(cur);
    if (isIn(c, punctuationChar))
        return token(punctuationType(c));
    if (String::isLetter(c) || c == '_')
        return id();
    if (c == '-' || String::isHexDigit(c))
        return number();
    return invalidToken();
}

/// COMMENT ::= '#' any*   up to the end of the line (LF or CR) or of the text
Token Lexer::comment() {
    return token(Token::Type::Comment,
                 takeWhile([](char c) { return c != '\n' && c != '\r' && c != static_cast<char>(endOfText); }));
}

/// STRING ::= '"' ( any | escape )* '"'   ends at the first quote without a backslash; kept as written
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

// The same for a source that shows no window.
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

// One character of an element or an outer bracket, or one separator, or a run of blanks. Both become one space between
// two elements, and nothing elsewhere.
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

// The elements between the brackets that `raw` begins and ends with, one space between two of them.
std::string_view Lexer::canonicalList(std::string_view raw) {
    ListFlattener flattener(raw.front(), raw.back());
    char* const text = texts_.allocate(raw.size());
    char* end = text;
    *end++ = raw.front();
    end = flattener.flatten(raw.substr(1, raw.size() - 2), end);
    *end++ = raw.back();
    return {text, end};
}

// The same, but the elements go to the sink piece by piece, each while it is still in the cache.
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

/// ID ::= ( letter | '_' ) ( letter | '_' | digit )*   unless it is one of the next three
/// TRUE ::= 'true'
/// FALSE ::= 'false'
/// NULL ::= 'null'
Token Lexer::id() {
    if (isAtEnd())
        return unexpectedEof("ID");
    return idToken(takeWhile([](char c) { return isIn(c, identifierChar); }));
}

/// INT ::= ( '-' | digit ) number-char*   without `.`, and without f, n, a, i in either case
/// REAL ::= ( '-' | digit ) number-char*   with one of them
/// number-char ::= digit | '+' | '-' | '.' | 'a'..'f' | 'i' | 'n' | 'u'   letters in either case
Token Lexer::number() {
    if (isAtEnd())
        return unexpectedEof("NUMBER");
    return numberToken(takeWhile([](char c) { return isIn(c, numberChar); }));
}

/// punctuation ::= "'" | '*' | '+' | ',' | '.' | '/' | ':' | ';' | '=' | '\' | '|'   each is a token
Token Lexer::token(Token::Type type) {
    const char c = static_cast<char>(cur);
    consume();
    return here(type, texts_.keep({&c, 1}));
}

Token Lexer::token(Token::Type type, const ds::Vector<char>& text) const {
    return here(type, texts_.keep({text.data(), text.size()}));
}

Token Lexer::eof() const { return here(Token::Type::Eof, messages::endOfInput); }

// An error consumes nothing, so its position is that of the character before it.
Token Lexer::invalidToken() const {
    return message(Token::Type::Invalid, String::format(messages::invalidToken, line, column, cur));
}

Token Lexer::unexpectedEof(String what) const { // NOLINT(performance-unnecessary-value-param)
    return message(Token::Type::Eof, String::format(messages::unexpectedEof, what.buf()));
}

Token Lexer::invalidListToken(String what) const { // NOLINT(performance-unnecessary-value-param)
    return message(Token::Type::Invalid, String::format(messages::invalidListToken, what.buf(), line, column, cur));
}

} // namespace vor::velmo_sdk::impl

#include "impl/lexer/Lexer.h"

#include "impl/Messages.h"
#include "impl/lexer/Word.h"
#include "scene/syntax/Keyword.h"

#include <algorithm>
#include <cstring>

namespace vor::velmo_sdk::impl {

namespace {

// The 8-bit counter lets the compiler use all lanes of a vector register, but limits a batch to 255 characters.
u64 countLineFeeds(std::string_view text) noexcept {
    constexpr std::size_t batch = 240;
    u64 count = 0;
    for (; !text.empty(); text.remove_prefix(std::min(batch, text.size()))) {
        u8 some = 0;
        for (const char c : text.substr(0, batch))
            some = static_cast<u8>(some + (c == '\n' ? 1 : 0));
        count += some;
    }
    return count;
}

} // namespace

char Lexer::consume() {
    line = wrappingAdd(line, prev == '\n' ? 1 : 0);
    column = prev == '\n' ? 1 : wrappingAdd(column, 1);
    prev = cur;
    pos = wrappingAdd(pos, 1);
    step(at_ != end_ ? 1 : 0);
    return static_cast<char>(prev);
}

// Consumes characters of the window, of which only the last may be a line feed, and returns them.
std::string_view Lexer::takeInLine(std::size_t count) {
    const std::string_view taken(at_, count);
    line = wrappingAdd(line, prev == '\n' ? 1 : 0);
    column = wrappingAdd(prev == '\n' ? 0 : column, count);
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(taken.back());
    step(count);
    return taken;
}

// The same for any characters, also none.
std::string_view Lexer::take(std::size_t count) {
    const std::string_view taken(at_, count);
    if (taken.empty())
        return taken;
    const std::size_t before = count - 1; // a line feed counts when the next character is consumed
    const auto* lastFeed = static_cast<const char*>(memrchr(at_, '\n', before));
    if (!lastFeed)
        return takeInLine(count);
    line = wrappingAdd(line, (prev == '\n' ? 1U : 0U) + countLineFeeds({at_, lastFeed + 1}));
    column = wrappingAdd(0, static_cast<u64>(at_ + before - lastFeed));
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(taken.back());
    step(count);
    return taken;
}

// Fetches the characters after the window, which moves if its memory cannot hold them. False at the end of the text.
bool Lexer::extend() {
    const std::string_view rest = window();
    if (hasTokens_ && owner_)
        texts_.hold(owner_); // before the refill: no characters are lost if memory runs out
    Window more = refill(rest);
    if (more.characters.size() == rest.size())
        return false;
    if (more.characters.data() != at_) {
        begins_ = {};
        refusedBefore_ = nullptr;
    }
    if (more.owner != owner_) {
        owner_ = std::move(more.owner);
        hasTokens_ = !rest.empty(); // the token that is being scanned
    }
    at_ = more.characters.data();
    end_ = at_ + more.characters.size();
    return true;
}

std::size_t Lexer::releaseWindow() noexcept {
    const std::size_t others = window().size() - (window().empty() ? 0 : 1);
    end_ -= others;
    begins_ = {};
    refusedBefore_ = nullptr;
    return others;
}

void Lexer::skipBlanks() {
    while (isIn(cur, blankChar)) {
        if (isIn(cur, foreignChar))
            countForeign();
        // Up to and including the first line feed: within a line, updating the position is cheap.
        const char* last = at_;
        while (*last != '\n' && last + 1 != end_ && isIn(last[1], asciiBlank))
            ++last;
        takeInLine(static_cast<std::size_t>(last + 1 - at_));
    }
}

// Counts `cur`, a byte outside ASCII among blanks.
void Lexer::countForeign() {
    refuseRestartBefore(at_); // it would be counted twice
    if (foreignBytes_++ == 0)
        firstForeignByte_ = nextPosition();
    // A complete byte-order mark at the start does not count.
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const bool goesOn = markLength_ < byteOrderMark.size() && static_cast<u32>(pos) == markLength_ &&
                        *at_ == byteOrderMark[markLength_];
    if (goesOn && ++markLength_ == byteOrderMark.size())
        foreignBytes_ = 0;
}

Token Lexer::nextToken(ElementSink* sink) {
    if (isIn(cur, blankChar))
        skipBlanks();
    begins_[tokens_++ % begins_.size()] = at_ != end_ ? at_ : nullptr;
    hasTokens_ = true;
    const char c = static_cast<char>(cur);
    if (isIn(c, punctuationChar))
        return token(punctuationType(c));
    if (isIn(c, identifierChar) || c == '-')
        return String::isLetter(c) || c == '_' ? id() : number();
    switch (c) {
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
        return isAtEnd() ? eof() : invalidToken();
    }
}

TextPlace Lexer::beginOf(const Token& token, u64 tokensAgo) const noexcept {
    const char* const first = begins_[(tokens_ - tokensAgo) % begins_.size()];
    if (!first || first < refusedBefore_)
        return {};
    const char* const last = first + token.text.size() - 1;
    return {first, static_cast<u32>(token.line), TextPlace::lowerHalf(last) - static_cast<u32>(token.column)};
}

void Lexer::restart(const TextPlace& place) noexcept {
    const TextPosition before = place.positionBefore();
    line = before.line;
    column = before.column;
    pos = wrappingAdd(pos, static_cast<u64>(place.at - at_));
    prev = ' '; // no line feed: the position is that of the next character's line
    at_ = place.at;
    cur = static_cast<signed char>(*at_);
}

/// COMMENT ::= '#' any*   up to the end of the line (LF or CR) or the end of the text
Token Lexer::comment() {
    const auto endOfLine = [](const char* at, const char* end) {
        return std::find_if(at, end,
                            [](char c) { return c == '\n' || c == '\r' || c == static_cast<char>(endOfText); });
    };
    return here(Token::Type::Comment, takeInLine(lengthOf(endOfLine)));
}

/// ID ::= ( letter | '_' ) ( letter | '_' | digit )*   except the next three
/// TRUE ::= 'true'
/// FALSE ::= 'false'
/// NULL ::= 'null'
Token Lexer::id() {
    if (isAtEnd())
        return unexpectedEof("ID");
    const std::string_view word = takeInLine(lengthOf(identifierEnd));
    switch (keywordNumber(word)) {
    case keyword("true"):
        return here(Token::Type::True, "true");
    case keyword("false"):
        return here(Token::Type::False, "false");
    case keyword("null"):
        return here(Token::Type::Null, "null");
    default:
        return here(Token::Type::Id, word);
    }
}

/// INT ::= ( '-' | digit ) number-char*   without `.`, and without f, n, a, i in either case
/// REAL ::= ( '-' | digit ) number-char*   with at least one of these
/// number-char ::= digit | '+' | '-' | '.' | 'a'..'f' | 'i' | 'n' | 'u'   letters in either case
Token Lexer::number() {
    if (isAtEnd())
        return unexpectedEof("NUMBER");
    const std::string_view text = takeInLine(lengthOf(numberEnd));
    const bool isReal = std::ranges::any_of(text, [](char c) { return isIn(c, realChar); });
    return here(isReal ? Token::Type::Real : Token::Type::Int, text);
}

/// punctuation ::= "'" | '*' | '+' | ',' | '.' | '/' | ':' | ';' | '=' | '\' | '|'   each character is a token
Token Lexer::token(Token::Type type) { return here(type, takeInLine(1)); }

Token Lexer::token(Token::Type type, const ds::Vector<char>& text) const {
    return here(type, texts_.keep(std::string_view(text.data(), text.size())));
}

Token Lexer::eof() const { return here(Token::Type::Eof, messages::endOfInput); }

// Nothing is consumed on an error, so its position is that of the previous character.
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

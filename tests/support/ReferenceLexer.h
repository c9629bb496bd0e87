// ReferenceLexer: the tokens of a text, one character at a time. The reference for the lexers that scan windows:
// written to be compared with the rules of the format, not to be fast.
#pragma once

#include "impl/lexer/Lexer.h"

#include <deque>
#include <string>
#include <utility>

namespace vrn::test {

// As in vrn/vrn.h, which the tests of a host's scene model cannot include.
using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

class ReferenceLexer final : public Lexer {
public:
    explicit ReferenceLexer(std::string text) : text_(std::move(text)) { cur = character(0); }

    // A sink receives all elements together, with one space between them.
    Token nextToken(ElementSink* sink = nullptr) override {
        while (isBlank(cur)) {
            if (cur < 0 && !(index_ < 3 && text_.starts_with("\xEF\xBB\xBF")) && foreignBytes_++ == 0)
                firstForeignByte_ = nextPosition();
            next();
        }
        switch (cur) {
        case endOfText:
            return eof();
        case '"':
            return scanString();
        case '#':
            return scan(Token::Type::Comment, [](signed char c) { return c != '\n' && c != '\r' && c != endOfText; });
        case '(':
            return scanList(Token::Type::Parens, ')', "PARENS", "PAREN");
        case '{': {
            const Token list = scanList(Token::Type::Braces, '}', "BRACES", "BRACE");
            if (!sink || list.type != Token::Type::Braces)
                return list;
            sink->take(list.text.substr(1, list.text.size() - 2));
            return {list.type, "{}", list.line, list.column};
        }
        case '[':
            return scanBrackets();
        default:
            break;
        }
        for (const auto& [character, type] : punctuation)
            if (cur == character)
                return make(type, {next()});
        if (isLetter(cur) || cur == '_')
            return scanWord();
        return isDigit(cur) || cur == '-' ? scanNumber() : invalidToken();
    }

private:
    Window refill(std::string_view rest) override { return {rest}; } // there is no window

    static constexpr std::pair<char, Token::Type> punctuation[] = {
        {'\'', Token::Type::Quote},     {'*', Token::Type::Star},      {'+', Token::Type::Plus},
        {',', Token::Type::Comma},      {'.', Token::Type::Dot},       {'/', Token::Type::Slash},
        {':', Token::Type::Colon},      {';', Token::Type::Semicolon}, {'=', Token::Type::Equals},
        {'\\', Token::Type::Backslash}, {'|', Token::Type::Pipe}};

    static bool isBlank(signed char c) { return c != endOfText && (c <= ' ' || c == 127); } // negative: outside ASCII
    static bool isLetter(signed char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    static bool isDigit(signed char c) { return c >= '0' && c <= '9'; }
    static bool isAmong(signed char c, std::string_view set) { return set.find(static_cast<char>(c)) != set.npos; }
    static bool isOfNumber(signed char c) { return isAmong(c, "0123456789abcdefABCDEF+-.iInNuU"); }
    static bool isPunctuation(signed char c) { return isAmong(c, "()[]{},"); }

    [[nodiscard]] signed char character(std::size_t index) const {
        return index < text_.size() ? static_cast<signed char>(text_[index]) : endOfText;
    }

    // Consumes `cur`.
    char next() {
        line += prev == '\n' ? 1 : 0;
        column = prev == '\n' ? 1 : column + 1;
        prev = cur;
        cur = character(++index_);
        return static_cast<char>(prev);
    }

    Token make(Token::Type type, std::string text) {
        return {type, texts_.emplace_back(std::move(text)), line, column};
    }
    Token keep(const Token& error) { return {error.type, texts_.emplace_back(error.text), error.line, error.column}; }

    template <class Belongs> Token scan(Token::Type type, Belongs belongs) {
        std::string text;
        while (belongs(cur))
            text += next();
        return make(type, std::move(text));
    }

    Token scanWord() {
        const Token word = scan(Token::Type::Id, [](signed char c) { return isLetter(c) || isDigit(c) || c == '_'; });
        for (const auto& [keyword, type] :
             {std::pair("true", Token::Type::True), {"false", Token::Type::False}, {"null", Token::Type::Null}})
            if (String(word.text).compareNoCase(keyword) == 0)
                return make(type, keyword);
        return word;
    }

    Token scanNumber() {
        Token number = scan(Token::Type::Int, isOfNumber);
        if (number.text.find_first_of(".fFnNaAiI") != std::string_view::npos)
            number.type = Token::Type::Real;
        return number;
    }

    // A backslash keeps the next character, also another backslash, from ending the string.
    Token scanString() {
        std::string text{next()};
        while (cur != endOfText) {
            const char c = next();
            text += c;
            if (c == '"')
                return make(Token::Type::String, std::move(text));
            if (c == '\\' && cur != endOfText)
                text += next();
        }
        return keep(unexpectedEof("STRING"));
    }

    Token scanBrackets() {
        std::string text;
        while (cur != endOfText) {
            if (!isAmong(cur, "[]*") && !isBlank(cur) && !isDigit(cur))
                return keep(invalidListToken("BRACKET"));
            text += next();
            if (cur == ']')
                return make(Token::Type::Brackets, text + next());
        }
        return keep(unexpectedEof("BRACKETS"));
    }

    Token scanList(Token::Type type, char close, const char* name, const char* shortName) {
        const auto open = static_cast<char>(cur);
        std::string text;
        int depth = 0;
        while (cur != endOfText) {
            if (!isBlank(cur) && !isPunctuation(cur) && !isOfNumber(cur))
                return keep(invalidListToken(shortName));
            if (!text.empty() && cur == open) {
                next();
                ++depth;
            } else if (depth > 0 && cur == close) {
                next();
                --depth;
            } else if (cur == open || cur == close || isOfNumber(cur)) {
                text += next();
            } else {
                if (isPunctuation(cur))
                    next();
                else
                    while (isBlank(cur))
                        next();
                if (text.back() != ' ' && text.back() != open && cur != close && cur != endOfText)
                    text += ' ';
            }
            if (depth == 0 && cur == close)
                return make(type, text + next());
        }
        return keep(unexpectedEof(name));
    }

    std::string text_;
    std::size_t index_ = 0;         // of `cur`
    std::deque<std::string> texts_; // of the tokens
};

} // namespace vrn::test

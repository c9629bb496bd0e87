// RecordingLexer: a lexer for text in memory that keeps where its tokens are.
#pragma once

#include "impl/lexer/StringLexer.h"

#include <vector>

namespace vor::velmo_sdk::impl {

// Characters of a text, from an offset up to another.
struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;
    [[nodiscard]] std::string_view of(std::string_view text) const { return text.substr(begin, end - begin); }
};

class RecordingLexer final : public StringLexer {
public:
    struct Place {
        Token::Type type;
        Span span;
    };

    explicit RecordingLexer(const String& text) : StringLexer(text), text_(text) {}

    [[nodiscard]] Token nextToken(ElementSink* sink = nullptr) override {
        const std::size_t end = offset(); // of the previous token
        const Token token = StringLexer::nextToken(sink);
        const std::string_view taken = text_.view().substr(end, offset() - end);
        const auto first = std::ranges::find_if_not(taken, [](char c) { return isIn(c, blankChar); });
        places_.push_back({token.type, {end + static_cast<std::size_t>(first - taken.begin()), offset()}});
        return token;
    }

    // Of all tokens so far.
    [[nodiscard]] const std::vector<Place>& places() const noexcept { return places_; }

private:
    String text_;
    std::vector<Place> places_;
};

} // namespace vor::velmo_sdk::impl

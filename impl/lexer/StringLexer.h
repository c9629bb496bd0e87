// The characters of a text in memory.
#pragma once

#include "impl/lexer/Lexer.h"

namespace vor::velmo_sdk::impl {

class StringLexer final : public Lexer {
public:
    explicit StringLexer(const String& text) : source(std::make_shared<const String>(text)) {
        // The empty text begins with its terminator.
        next_ = source->buf();
        end_ = next_ + std::max<std::size_t>(source->len(), 1);
        fetch();
    }

    char consume() override {
        advance();
        fetch();
        return static_cast<char>(prev);
    }

private:
    void fetch() noexcept { cur = next_ < end_ ? static_cast<signed char>(*next_++) : endOfText; }

    [[nodiscard]] std::string_view window() const noexcept override {
        return isAtEnd() ? std::string_view() : std::string_view(next_ - 1, end_);
    }
    void skip(std::size_t count) override {
        next_ += count - 1;
        fetch();
    }
    // The text stays where it is, so its lists can be read from there.
    [[nodiscard]] std::shared_ptr<const void> owner() const noexcept override { return source; }

    std::shared_ptr<const String> source;
    const char* next_; // behind `cur`
    const char* end_;
};

} // namespace vor::velmo_sdk::impl

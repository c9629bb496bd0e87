// The characters of a text in memory.
#pragma once

#include "impl/lexer/Lexer.h"

namespace vor::velmo_sdk::impl {

class StringLexer final : public Lexer {
public:
    explicit StringLexer(const String& text) : source(text) { cur = static_cast<signed char>(source[0]); }

    char consume() override {
        advance();
        ++offset_;
        cur = offset_ < source.len() ? static_cast<signed char>(source[offset_]) : endOfText;
        return static_cast<char>(prev);
    }

private:
    String source;
    u64 offset_ = 0; // of `cur`
};

} // namespace vor::velmo_sdk::impl

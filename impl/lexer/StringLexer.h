// The characters of a text in memory.
#pragma once

#include "impl/lexer/Lexer.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

class StringLexer final : public Lexer {
public:
    explicit StringLexer(const String& text) : source(text) {
        keepWindow();
        // The empty text begins with its terminator.
        setWindow({source.buf(), std::max<std::size_t>(source.len(), 1)});
    }

    char consume() override { return consumeFromWindow(); }

    // Of the character that would be consumed next, in bytes from the start of the text.
    [[nodiscard]] std::size_t offset() const noexcept { return source.len() - std::min(source.len(), window().size()); }

private:
    void refill() override { setWindow({}); }

    String source;
};

} // namespace vor::velmo_sdk::impl

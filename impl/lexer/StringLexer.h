// StringLexer: a lexer for text in memory.
#pragma once

#include "impl/lexer/Lexer.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

class StringLexer final : public Lexer {
public:
    explicit StringLexer(const String& text) : source(text) {
        keepWindow();
        // The window of an empty text is its terminator.
        setWindow({source.buf(), std::max<std::size_t>(source.len(), 1)});
    }

    char consume() override { return consumeFromWindow(); }

    // The offset of the next character to be consumed.
    [[nodiscard]] std::size_t offset() const noexcept { return source.len() - std::min(source.len(), window().size()); }

private:
    void refill() override { setWindow({}); }

    String source;
};

} // namespace vor::velmo_sdk::impl

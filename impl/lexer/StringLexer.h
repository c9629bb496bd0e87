// StringLexer: a lexer for text in memory.
#pragma once

#include "impl/lexer/Lexer.h"

#include <utility>

namespace vor::velmo_sdk::impl {

class StringLexer : public Lexer {
public:
    explicit StringLexer(const String& text) : source(text) { start(); }

    // The offset of the next character to be consumed.
    [[nodiscard]] std::size_t offset() const noexcept { return source.len() - std::min(source.len(), window().size()); }

private:
    // The window is the whole text; that of an empty text is its terminator.
    Window refill(std::string_view rest) override {
        if (std::exchange(isStarted_, true))
            return {rest};
        return {{source.buf(), std::max<std::size_t>(source.len(), 1)}};
    }

    String source;
    bool isStarted_ = false;
};

} // namespace vor::velmo_sdk::impl

// The characters of a text in memory.
#pragma once

#include "impl/lexer/Lexer.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

class StringLexer final : public Lexer {
public:
    explicit StringLexer(const String& text) : source(std::make_shared<const String>(text)) {
        // The empty text begins with its terminator.
        setWindow({source->buf(), std::max<std::size_t>(source->len(), 1)});
    }

    char consume() override { return window().empty() ? consumeEnd() : consumeFromWindow(); }

private:
    void refill() override { setWindow({}); }

    // The text stays where it is, so its lists can be read from there.
    [[nodiscard]] std::shared_ptr<const void> owner() const noexcept override { return source; }

    std::shared_ptr<const String> source;
};

} // namespace vor::velmo_sdk::impl

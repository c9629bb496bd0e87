// The characters of a file, from its current position on.
#pragma once

#include "impl/lexer/Lexer.h"
#include "scene/core/File.h"

namespace vor::velmo_sdk::impl {

class FileLexer final : public Lexer {
public:
    explicit FileLexer(const File& file) : source(file) { fetch(); }

    char consume() override {
        advance();
        fetch();
        return static_cast<char>(prev);
    }

private:
    void fetch() {
        if (!source.read(cur))
            cur = endOfText;
    }

    // `cur` is the byte that was read last, in front of those that are not.
    [[nodiscard]] std::string_view window() const noexcept override {
        const std::string_view unread = source.unread();
        return isAtEnd() ? std::string_view() : std::string_view(unread.data() - 1, unread.size() + 1);
    }
    void skip(std::size_t count) override {
        source.skip(count - 1);
        fetch();
    }

    File source;
};

} // namespace vor::velmo_sdk::impl

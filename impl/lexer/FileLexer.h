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

    File source;
};

} // namespace vor::velmo_sdk::impl

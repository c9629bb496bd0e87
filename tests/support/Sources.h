// Character sources for tests.
#pragma once

#include "impl/lexer/Lexer.h"
#include "scene/core/File.h"

#include <string>

namespace vrn::test {

// As in vrn/vrn.h, which the tests of a host's scene model cannot include.
using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

// A source without a lookahead window: the scanner reads byte by byte. The reference for the other sources.
class PlainLexer final : public Lexer {
public:
    explicit PlainLexer(std::string text) : text_(std::move(text)) { fetch(); }
    char consume() override {
        advance();
        ++at_;
        fetch();
        return static_cast<char>(prev);
    }
    using Lexer::brackets;
    using Lexer::column;
    using Lexer::cur;
    using Lexer::id;
    using Lexer::line;
    using Lexer::number;
    using Lexer::pos;
    using Lexer::prev;

private:
    void fetch() { cur = at_ < text_.size() ? static_cast<signed char>(text_[at_]) : endOfText; }
    std::string text_;
    std::size_t at_ = 0;
};

// Delivers a text in blocks of a fixed size.
class Blocks final : public ByteSource {
public:
    Blocks(const std::string& text, std::size_t size) : text_(text), size_(size) {}
    std::size_t read(char* buffer, std::size_t capacity, String&) override {
        const std::size_t count = text_.copy(buffer, std::min(capacity, size_), at_);
        at_ += count;
        return count;
    }

private:
    const std::string& text_;
    std::size_t size_;
    std::size_t at_ = 0;
};

} // namespace vrn::test

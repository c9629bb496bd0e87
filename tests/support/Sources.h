// Character sources for tests.
#pragma once

#include "scene/core/File.h"
#include "tests/support/ReferenceLexer.h"

#include <string>

namespace vrn::test {

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

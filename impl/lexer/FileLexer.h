// The characters of a file, from its current position on.
#pragma once

#include "impl/lexer/Lexer.h"
#include "scene/core/File.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

class FileLexer final : public Lexer {
public:
    explicit FileLexer(const File& file) : source(file) { fetch(); }
    ~FileLexer() override { skipConsumed(); }

    char consume() override {
        const bool isBehindEnd = window().empty();
        const char consumed = consumeFromWindow();
        if (isBehindEnd)
            fetch(); // whether its end is the last word is the file's to say
        return consumed;
    }

private:
    void refill() override {
        skipConsumed();
        fetch();
    }

    // Shows `cur` and all that the file has at hand behind it.
    void fetch() {
        char first;
        if (!source.read(first)) {
            shown_ = {};
            return setWindow({});
        }
        const std::string_view unread = source.unread();
        shown_ = {unread.data() - 1, unread.size() + 1};
        setWindow(shown_);
    }

    // Brings the file, which others may hold too, to where the window has been consumed to; its first
    // character was read when it was shown.
    void skipConsumed() noexcept {
        const std::size_t left = window().size();
        if (!shown_.empty())
            source.skip(std::min(shown_.size() - left, shown_.size() - 1));
        shown_ = {};
    }

    File source;
    std::string_view shown_;
};

} // namespace vor::velmo_sdk::impl

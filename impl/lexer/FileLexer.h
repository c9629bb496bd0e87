// FileLexer: a lexer for a file, starting at its current position.
#pragma once

#include "impl/lexer/Lexer.h"
#include "scene/core/File.h"

namespace vor::velmo_sdk::impl {

class FileLexer final : public Lexer, private File::Borrower {
public:
    explicit FileLexer(const File& file) : source(file) { fetch(); }
    ~FileLexer() override { source.endLoan(*this); }

    char consume() override {
        const bool isAfterEnd = window().empty();
        const char consumed = consumeFromWindow();
        if (isAfterEnd)
            fetch(); // the file decides whether its end is final
        return consumed;
    }

private:
    void refill() override { fetch(); }

    // Reads `cur`; the window is `cur` and the bytes after it that the file has buffered.
    void fetch() {
        if (!source.read(first_))
            return setWindow({});
        const std::string_view after = source.borrow(*this);
        setWindow(after.empty() ? std::string_view(&first_, 1) : std::string_view(after.data() - 1, after.size() + 1));
    }

    // Reduces the window to `cur`, which has been read already, in memory that outlives the file's block. Returns the
    // number of unread characters.
    std::size_t returnLoan() noexcept override {
        const std::size_t left = window().size();
        if (left == 0)
            return 0;
        first_ = static_cast<char>(cur);
        setWindow({&first_, 1});
        return left - 1;
    }

    File source;
    char first_ = 0;
};

} // namespace vor::velmo_sdk::impl

// FileLexer: a lexer for a file, starting at its current position. If the reading of the file is stopped, the function
// that asks for more characters throws Stopped, also the constructor.
#pragma once

#include "impl/lexer/Lexer.h"
#include "scene/core/File.h"

#include <exception>
#include <utility>

namespace vor::velmo_sdk::impl {

class FileLexer final : public Lexer, private File::Borrower {
public:
    struct Stopped : std::exception {
        explicit Stopped(TextPosition next) noexcept : position(next) {}
        TextPosition position; // of the next character to be consumed: the first one of a token other than a list
    };

    explicit FileLexer(const File& file) : source(file) { start(); }
    ~FileLexer() override { source.endLoan(*this); }

    [[nodiscard]] bool isShared() const noexcept override { return true; }

private:
    Window refill(std::string_view rest) override {
        File::Piece loan = source.borrow(*this, rest);
        if (source.isStopped())
            throw Stopped(nextPosition());
        return {loan.bytes, std::move(loan.owner)};
    }

    // `cur` counts as read.
    std::size_t returnLoan() noexcept override { return releaseWindow(); }

    File source;
};

} // namespace vor::velmo_sdk::impl

// FileLexer: a lexer for a file, starting at its current position.
#pragma once

#include "impl/lexer/Lexer.h"
#include "scene/core/File.h"

#include <utility>

namespace vor::velmo_sdk::impl {

class FileLexer final : public Lexer, private File::Borrower {
public:
    explicit FileLexer(const File& file) : source(file) { start(); }
    ~FileLexer() override { source.endLoan(*this); }

    [[nodiscard]] bool isShared() const noexcept override { return true; }

private:
    Window refill(std::string_view rest) override {
        File::Piece loan = source.borrow(*this, rest);
        return {loan.bytes, std::move(loan.owner)};
    }

    // `cur` counts as read.
    std::size_t returnLoan() noexcept override { return releaseWindow(); }

    File source;
};

} // namespace vor::velmo_sdk::impl

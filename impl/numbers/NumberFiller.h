// The numbers of a list, read into a block while the list is scanned.
#pragma once

#include "impl/numbers/PlainBlocks.h"
#include "scene/core/String.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vor::velmo_sdk::impl {

// Takes the characters of a list piece by piece, cut anywhere. Numbers stand in the block in the order of
// the text, unaligned and in the machine's own form; a number that cannot be read leaves its place as it
// is. When the block is full nothing more is read.
class NumberFiller {
public:
    NumberFiller(const NumberFiller&) = delete;
    NumberFiller& operator=(const NumberFiller&) = delete;
    virtual ~NumberFiller() = default;

    // The plain ones are read with `set`, which the processor must have.
    template <class Number>
    [[nodiscard]] static std::unique_ptr<NumberFiller> make(std::span<std::byte> block,
                                                            InstructionSet set = instructionSet());

    void take(std::string_view characters);

    // To be called behind the last piece.
    void finish();

    [[nodiscard]] bool isRead() const noexcept { return isRead_; }             // every number could be
    [[nodiscard]] std::size_t filledBytes() const noexcept { return filled_; } // the unreadable ones included
    [[nodiscard]] const std::optional<String>& excess() const noexcept { return excess_; } // the first too many

protected:
    explicit NumberFiller(std::span<std::byte> block) noexcept : block_(block) {}

    [[nodiscard]] std::byte* next() const noexcept { return block_.data() + filled_; }
    [[nodiscard]] std::size_t room() const noexcept { return block_.size() - filled_; }
    void advance(std::size_t bytes) noexcept { filled_ += bytes; }
    void fail() noexcept { isRead_ = false; }
    void tooMany(std::string_view number) { excess_ = String(number); }

private:
    // Numbers of a text that goes on with a separator, or ends.
    virtual void readWhole(std::string_view text) = 0;

    std::span<std::byte> block_;
    std::size_t filled_ = 0;
    bool isRead_ = true;
    std::optional<String> excess_;
    std::string cut_; // the start of a number that the next piece goes on with
};

} // namespace vor::velmo_sdk::impl

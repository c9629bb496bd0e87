// Parses the numbers of a list into a block of memory while the list is being scanned.
//
//     auto filler = NumberFiller::make<float>(block);
//     filler.take("1.5 2");          // pieces may be cut inside a number
//     filler.take("5, 3");
//     filler.finish();               // block: 1.5, 25, 3
//     filler.isRead();               // whether every element was a number of the type
//
// The caller owns the block, which must outlive the filler. Linear in the characters; apart from a number that is cut
// by the end of a piece nothing is copied. One thread at a time.
#pragma once

#include "impl/numbers/PlainBlocks.h"
#include "scene/core/String.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vor::velmo_sdk::impl {

// Elements are stored in the order of the text, unaligned and in native byte order. An element that cannot be parsed
// leaves its slot unchanged. After the block is full, the first further element is kept as excess() and the rest
// ignored.
class NumberFiller {
public:
    // Uses `set`, which the processor must have.
    template <class Number>
    [[nodiscard]] static NumberFiller make(std::span<std::byte> block, InstructionSet set = instructionSet());

    void take(std::string_view characters);
    void finish(); // call after the last piece

    [[nodiscard]] bool isRead() const noexcept { return isRead_; }
    [[nodiscard]] std::size_t filledBytes() const noexcept { return filled_; } // those of unreadable elements included
    [[nodiscard]] const std::optional<String>& excess() const noexcept { return excess_; }

private:
    using ReadWhole = void (NumberFiller::*)(std::string_view);
    NumberFiller(std::span<std::byte> block, ReadWhole readWhole, BlockReader readBlocks) noexcept
        : block_(block), readWhole_(readWhole), readBlocks_(readBlocks) {}

    template <class Number> void readNumbers(std::string_view text);
    template <class Number> const char* readOneByOne(const char* at, const char* until, const char* end);
    [[nodiscard]] std::byte* next() const noexcept { return block_.data() + filled_; }
    [[nodiscard]] std::size_t remaining() const noexcept { return block_.size() - filled_; }

    std::span<std::byte> block_;
    ReadWhole readWhole_;    // parses a piece that ends between two numbers
    BlockReader readBlocks_; // null if the set has none
    std::size_t filled_ = 0;
    bool isRead_ = true;
    std::optional<String> excess_;
    std::string partial_; // the start of a number that the next piece continues
};

} // namespace vor::velmo_sdk::impl

// TextKeeper: owns the text of tokens that do not refer to the source.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

// Keeps copies for the statement during which they were scanned and the next `lookahead` ones. A statement consumes at
// least one token, so no token is used for longer.
class TextKeeper {
public:
    static constexpr int lookahead = 3; // tokens scanned before they are consumed

    // Returns a copy, valid until startStatement() has been called `lookahead` + 1 more times.
    [[nodiscard, gnu::noinline]] std::string_view keep(std::string_view text) {
        char* copy = allocate(text.size());
        if (!text.empty())
            std::memcpy(copy, text.data(), text.size());
        return {copy, text.size()};
    }

    // Allocates uninitialised characters, which are valid for as long.
    [[nodiscard]] char* allocate(std::size_t size) { return statements_[current_].allocate(size); }

    void startStatement() noexcept {
        current_ = (current_ + 1) % statements_.size();
        statements_[current_].clear();
    }

private:
    // The texts of one statement, in one block unless they are many or large.
    class Texts {
    public:
        char* allocate(std::size_t size) {
            if (size > left_)
                addBlock(size);
            left_ -= size;
            char* place = next_;
            next_ += size;
            return place;
        }

        void clear() noexcept {
            if (blocks_.empty())
                return;
            blocks_.resize(1);
            lastSize_ = firstSize;
            next_ = blocks_[0].get();
            left_ = firstSize;
        }

    private:
        static constexpr std::size_t firstSize = 1024;

        // The first block has a fixed size, so that it can be reused.
        void addBlock(std::size_t atLeast) {
            if (blocks_.empty())
                push(firstSize);
            if (left_ < atLeast)
                push(std::max(2 * lastSize_, atLeast));
        }
        void push(std::size_t size) {
            blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
            lastSize_ = size;
            next_ = blocks_.back().get();
            left_ = size;
        }

        std::vector<std::unique_ptr<char[]>> blocks_;
        std::size_t lastSize_ = 0;
        char* next_ = nullptr;
        std::size_t left_ = 0;
    };

    std::array<Texts, lookahead + 1> statements_;
    std::size_t current_ = 0;
};

} // namespace vor::velmo_sdk::impl

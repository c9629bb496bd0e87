// Characters gathered from a source that shows them piece by piece.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace vor::velmo_sdk::impl {

// Grows through realloc(), which moves the pages of a large block instead of copying them: a list may be
// gigabytes long.
class GatheredText {
public:
    GatheredText() = default;
    GatheredText(GatheredText&& other) noexcept
        : bytes_(std::exchange(other.bytes_, nullptr)), size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    GatheredText& operator=(GatheredText&&) = delete;
    ~GatheredText() { std::free(bytes_); }

    void append(std::string_view piece) {
        if (piece.size() > capacity_ - size_)
            grow(size_ + piece.size());
        if (!piece.empty())
            std::memcpy(bytes_ + size_, piece.data(), piece.size());
        size_ += piece.size();
    }

    [[nodiscard]] bool isEmpty() const noexcept { return size_ == 0; }
    [[nodiscard]] std::string_view view() const noexcept { return {bytes_, size_}; }

private:
    void grow(std::size_t needed) {
        const std::size_t capacity = std::max<std::size_t>({needed, 2 * capacity_, 64});
        void* bytes = std::realloc(bytes_, capacity);
        if (!bytes)
            throw std::bad_alloc();
        bytes_ = static_cast<char*>(bytes);
        capacity_ = capacity;
    }

    char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace vor::velmo_sdk::impl

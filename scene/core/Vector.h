// A dynamic array with a specified growth: capacity for two elements on the first insertion, then doubling.
//
//     ds::Vector<int> numbers{1, 2};
//     numbers.push(3) = 4;                  // 1, 2, 4; capacity 4
//
// Otherwise as std::vector: it owns its elements, growth invalidates iterators and references, and push() has the
// strong exception guarantee. Appending is amortised O(1).
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace vor::ds {

template <class T> class Vector {
public:
    Vector() = default;
    Vector(std::initializer_list<T> items) : items_(items) {}

    [[nodiscard]] std::size_t size() const noexcept { return items_.size(); }
    [[nodiscard]] std::size_t capacity() const noexcept { return items_.capacity(); }
    [[nodiscard]] bool isEmpty() const noexcept { return items_.empty(); }

    [[nodiscard]] T& operator[](std::size_t i) noexcept { return items_[i]; }
    [[nodiscard]] const T& operator[](std::size_t i) const noexcept { return items_[i]; }
    [[nodiscard]] T& last() noexcept { return items_.back(); }
    [[nodiscard]] const T& last() const noexcept { return items_.back(); }
    [[nodiscard]] T* data() noexcept { return items_.data(); }
    [[nodiscard]] const T* data() const noexcept { return items_.data(); }

    [[nodiscard]] auto begin() noexcept { return items_.begin(); }
    [[nodiscard]] auto end() noexcept { return items_.end(); }
    [[nodiscard]] auto begin() const noexcept { return items_.begin(); }
    [[nodiscard]] auto end() const noexcept { return items_.end(); }

    // Reserves capacity for `capacity` elements; never shrinks.
    void reserve(std::size_t capacity) { items_.reserve(capacity); }

    // Appends `item` and returns a reference to it.
    T& push(T item) {
        if (items_.size() == items_.capacity())
            items_.reserve(items_.empty() ? 2 : 2 * items_.capacity());
        return items_.emplace_back(std::move(item));
    }

    // Requires a non-empty vector.
    void pop() noexcept { items_.pop_back(); }

    // Removes all elements and keeps the capacity.
    void clear() noexcept { items_.clear(); }

    friend bool operator==(const Vector&, const Vector&) = default;

private:
    std::vector<T> items_;
};

} // namespace vor::ds

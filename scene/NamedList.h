// The children of a node or an input: owned elsewhere, in order, and found by name in O(1).
#pragma once

#include "scene/core/String.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vor::velmo_sdk::impl {

// T has `const String& key() const`, which stays where and what it is while the item is in the list.
// `leastCapacity` is how many the first block of memory is for.
template <class T, std::size_t leastCapacity> class NamedList {
public:
    [[nodiscard]] std::span<T* const> items() const noexcept { return items_; }
    [[nodiscard]] std::size_t size() const noexcept { return items_.size(); }

    [[nodiscard]] T* find(const String& name) const noexcept {
        if (index_) {
            const auto found = index_->find(name);
            return found == index_->end() ? nullptr : found->second;
        }
        for (T* item : items_)
            if (item->key() == name)
                return item;
        return nullptr;
    }

    // Appends an item whose name is not there yet. When it throws, nothing has changed.
    void push(T* item) {
        pushUnnamed(item);
        try {
            enter(item);
        } catch (...) {
            items_.pop_back();
            throw;
        }
    }

    // Appends an item that nobody looks up by name.
    void pushUnnamed(T* item) {
        if (items_.size() == items_.capacity())
            items_.reserve(std::max<std::size_t>(leastCapacity, 2 * items_.size()));
        items_.push_back(item);
    }

    // Takes the last item off; null when there is none. Meant for emptying the list: names are no
    // longer found quickly afterwards.
    [[nodiscard]] T* takeLast() noexcept {
        index_.reset();
        if (items_.empty())
            return nullptr;
        T* item = items_.back();
        items_.pop_back();
        return item;
    }

private:
    using Index = std::unordered_map<std::string_view, T*>;
    static constexpr std::size_t searchedLinearly = 16;

    void enter(T* item) {
        if (index_) {
            index_->emplace(item->key(), item);
        } else if (items_.size() > searchedLinearly) {
            auto index = std::make_unique<Index>();
            for (T* each : items_)
                index->emplace(each->key(), each);
            index_ = std::move(index);
        }
    }

    std::vector<T*> items_;
    std::unique_ptr<Index> index_; // made when a search from the front gets slow
};

} // namespace vor::velmo_sdk::impl

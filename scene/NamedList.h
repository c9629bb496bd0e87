// The children of a node or an input: pointers to objects with other owners, in order, found by name in O(1).
#pragma once

#include "scene/core/String.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

namespace vor::velmo_sdk::impl {

template <class T> class NameTable; // NameTable.h is for those who make, change or search a list

// T has `const String& key() const`, whose value must not change while the item is in the list. A list of
// up to `inlineCapacity` items allocates nothing; `firstCapacity` is the capacity of the first allocation.
template <class T, u32 inlineCapacity, u32 firstCapacity, u32 limit = u32(1) << 30> class NamedList {
public:
    static constexpr u32 maxItems = limit; // one more throws std::bad_alloc

    NamedList() = default;
    NamedList(const NamedList&) = delete;
    NamedList& operator=(const NamedList&) = delete;
    ~NamedList() {
        if (!isInline())
            std::free(many_);
    }

    [[nodiscard]] std::span<T* const> items() const noexcept { return {isInline() ? few_ : many_, size_}; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    [[nodiscard]] T* find(const String& name) const noexcept {
        if (index_)
            return index_->find(name, index_->hashOf(name));
        for (T* item : items())
            if (item->key() == name)
                return item;
        return nullptr;
    }

    // Appends an item with a new name. If it throws std::bad_alloc, the list is unchanged.
    void push(T* item) {
        pushUnnamed(item);
        if (!index_ && size_ <= searchedLinearly)
            return;
        try {
            enter(item);
        } catch (...) {
            --size_;
            throw;
        }
    }

    // Appends an item that is never looked up by name, for lists without push().
    void pushUnnamed(T* item) {
        if (size_ == capacity_)
            grow();
        (isInline() ? few_ : many_)[size_++] = item;
    }

    // Removes an item of the list; the others keep their order. Linear.
    void erase(const T* item) noexcept {
        T** const all = isInline() ? few_ : many_;
        if (index_)
            index_->erase(item);
        T** const place = std::find(all, all + size_, item);
        std::copy(place + 1, all + size_, place);
        --size_;
    }

    // Removes and returns the last item; null if the list is empty. For clearing the list: drops the index, so that
    // find() becomes linear.
    [[nodiscard]] T* takeLast() noexcept {
        index_.reset();
        return size_ == 0 ? nullptr : (isInline() ? few_ : many_)[--size_];
    }

private:
    using Index = NameTable<T>;
    static constexpr std::size_t searchedLinearly = 16;

    [[nodiscard]] bool isInline() const noexcept { return capacity_ == inlineCapacity; }

    void grow() {
        if (capacity_ >= maxItems)
            throw std::bad_alloc();
        const u32 capacity = std::clamp(2 * capacity_, firstCapacity, maxItems);
        void* memory = std::realloc(isInline() ? nullptr : many_, capacity * sizeof(T*));
        if (!memory)
            throw std::bad_alloc();
        T** many = static_cast<T**>(memory);
        if (isInline())
            std::ranges::copy(few_, many);
        many_ = many;
        capacity_ = capacity;
    }

    void enter(T* item) {
        if (index_)
            return index_->add(item);
        auto index = std::make_unique<Index>();
        for (T* each : items())
            index->add(each);
        index_ = std::move(index);
    }

    union {
        T* few_[inlineCapacity] = {}; // while the capacity is the inline one
        T** many_;
    };
    u32 size_ = 0;
    u32 capacity_ = inlineCapacity;
    static_assert(firstCapacity > inlineCapacity);
    std::unique_ptr<Index> index_; // made when the list outgrows a linear search, and kept if it gets shorter
};

} // namespace vor::velmo_sdk::impl

// Objects by name: the nodes of a scene, the inputs and outputs of a node, the members of an object.
#pragma once

#include "scene/core/Hash.h"
#include "scene/core/String.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

// A hash table with open addressing and linear probing, at most half full. One byte of each hash is in a separate
// array, which is small enough to stay in the cache; a lookup that finds nothing, as for each new node, usually reads
// only that. T has `const String& key() const`, whose value must not change while the object is in the table. All
// operations are O(1).
template <class T> class NameTable {
public:
    [[nodiscard]] static u64 hashOf(const String& name) noexcept { return keyedHash(name.view()); }

    // `hash` is hashOf(name).
    [[nodiscard]] T* find(const String& name, u64 hash) const noexcept {
        if (tags_.empty())
            return nullptr;
        for (std::size_t i = home(hash); tags_[i] != free; i = next(i))
            if (tags_[i] == tagOf(hash) && slots_[i].item->key() == name)
                return slots_[i].item;
        return nullptr;
    }

    // Loads what find() reads for some names into the cache, so that their cache misses overlap. Reads the memory,
    // because processors may drop a prefetch instruction on a TLB miss.
    void touch(std::span<const u64> hashes) const noexcept {
        constexpr std::size_t cacheLine = 64;
        if (tags_.empty())
            return;
        std::array<const volatile char*, maxTouched> items{};
        for (std::size_t i = 0; i < hashes.size() && i < maxTouched; ++i)
            items[i] = reinterpret_cast<const volatile char*>(slots_[home(hashes[i])].item);
        for (const volatile char* item : items)
            for (std::size_t i = 0; item && i < sizeof(T); i += cacheLine)
                (void)item[i];
    }
    static constexpr std::size_t maxTouched = 32; // names that one touch() loads

    // Reserves capacity for one more object, so that insert() cannot fail.
    void reserveOne() {
        if (2 * (size_ + 1) <= tags_.size())
            return;
        const std::size_t count = std::max<std::size_t>(16, 2 * tags_.size());
        NameTable larger;
        larger.tags_.resize(count);
        larger.slots_.resize(count);
        for (std::size_t i = 0; i < tags_.size(); ++i)
            if (tags_[i] != free)
                larger.place(slots_[i]);
        larger.size_ = size_;
        *this = std::move(larger);
    }

    // Adds an object with a new name, after reserveOne().
    void insert(T* item, u64 hash) noexcept {
        place({item, hash});
        ++size_;
    }

    // Both in one. If it throws std::bad_alloc, the table is unchanged.
    void add(T* item) {
        reserveOne();
        insert(item, hashOf(item->key()));
    }

    // Removes an object of the table and moves later entries of its probe sequence into the gap.
    void erase(const T* item) noexcept {
        std::size_t gap = home(hashOf(item->key()));
        while (slots_[gap].item != item)
            gap = next(gap);
        for (std::size_t i = next(gap); tags_[i] != free; i = next(i)) {
            const std::size_t mask = tags_.size() - 1;
            const std::size_t fromHome = (i - home(slots_[i].hash)) & mask;
            if (fromHome < ((i - gap) & mask))
                continue; // moving it would put it before its home
            slots_[gap] = slots_[i];
            tags_[gap] = tags_[i];
            gap = i;
        }
        slots_[gap] = {};
        tags_[gap] = free;
        --size_;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

private:
    struct Slot {
        T* item = nullptr;
        u64 hash = 0;
    };

    static constexpr u8 free = 0;

    [[nodiscard]] static u8 tagOf(u64 hash) noexcept { return static_cast<u8>(hash >> 56 | 0x80); }
    [[nodiscard]] std::size_t home(u64 hash) const noexcept {
        return static_cast<std::size_t>(hash ^ hash >> 32) & (tags_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t i) const noexcept { return (i + 1) & (tags_.size() - 1); }
    void place(const Slot& slot) noexcept {
        std::size_t i = home(slot.hash);
        while (tags_[i] != free)
            i = next(i);
        slots_[i] = slot;
        tags_[i] = tagOf(slot.hash);
    }

    std::vector<u8> tags_; // a byte of the hash, or `free`; the size is a power of two
    std::vector<Slot> slots_;
    std::size_t size_ = 0;
};

} // namespace vor::velmo_sdk::impl

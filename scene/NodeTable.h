// The nodes of a scene by name.
#pragma once

#include "scene/core/String.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

// Open addressing with linear probing, at most half full; a slot holds the hash beside the node, so that
// a lookup goes to the node itself only for a match. T has `const String& key() const`, which stays as
// it is while the node is in the table. All operations are O(1).
template <class T> class NodeTable {
public:
    // Not String::hash(), for which it is easy to find names that collide.
    [[nodiscard]] static u64 hashOf(const String& name) noexcept { return std::hash<std::string_view>()(name.view()); }

    // `hash` is the name's.
    [[nodiscard]] T* find(const String& name, u64 hash) const noexcept {
        if (slots_.empty())
            return nullptr;
        for (std::size_t i = home(hash); slots_[i].node; i = next(i))
            if (slots_[i].hash == hash && slots_[i].node->key() == name)
                return slots_[i].node;
        return nullptr;
    }

    // Makes room for one more; insert() then cannot fail.
    void reserveOne() {
        if (2 * (size_ + 1) <= slots_.size())
            return;
        std::vector<Slot> old(std::max<std::size_t>(16, 2 * slots_.size()));
        old.swap(slots_);
        for (const Slot& slot : old)
            if (slot.node)
                place(slot);
    }

    // Enters a node whose name is not there yet.
    void insert(T* node, u64 hash) noexcept {
        place({hash, node});
        ++size_;
    }

    // Takes out a node that is there, and closes the gap that it leaves.
    void erase(const T* node) noexcept {
        std::size_t gap = home(hashOf(node->key()));
        while (slots_[gap].node != node)
            gap = next(gap);
        for (std::size_t i = next(gap); slots_[i].node; i = next(i)) {
            const std::size_t mask = slots_.size() - 1;
            const std::size_t fromHome = (i - home(slots_[i].hash)) & mask;
            if (fromHome < ((i - gap) & mask))
                continue; // moving it would put it before its home
            slots_[gap] = slots_[i];
            gap = i;
        }
        slots_[gap] = {};
        --size_;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

private:
    struct Slot {
        u64 hash = 0;
        T* node = nullptr;
    };

    [[nodiscard]] std::size_t home(u64 hash) const noexcept {
        return static_cast<std::size_t>(hash ^ hash >> 32) & (slots_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t i) const noexcept { return (i + 1) & (slots_.size() - 1); }
    void place(const Slot& slot) noexcept {
        std::size_t i = home(slot.hash);
        while (slots_[i].node)
            i = next(i);
        slots_[i] = slot;
    }

    std::vector<Slot> slots_; // a power of two of them
    std::size_t size_ = 0;
};

} // namespace vor::velmo_sdk::impl

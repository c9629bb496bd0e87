// The links of one kind that are made at the end of the text: one for each input, the last one.
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/Hash.h"
#include "scene/core/Log.h"
#include "scene/core/Vector.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <vector>

namespace vor::velmo_sdk::impl {

// The target of a link as written: a node, an output of a node, or `null`. Node and output are separate strings because
// short strings need no allocation.
struct PendingLink {
    String node;     // the whole path unless it has exactly two parts
    String output{}; // empty for a reference, and for a path without exactly two parts
    TextPosition position{};
    bool isWithNode = false; // the path begins with a dot

    [[nodiscard]] bool isNull() const { return output.isEmpty() && node == "null"; }

    // The path as written.
    [[nodiscard]] String source() const {
        const String path = output.isEmpty() ? node : node + "." + output;
        return isWithNode ? "." + path : path;
    }
};

// Holds a reference to every input with a pending link, because the input may be removed from the scene before the link
// is made. Storing a link takes amortised constant time.
class PendingLinks {
public:
    PendingLinks() = default;
    PendingLinks(const PendingLinks&) = delete;
    PendingLinks& operator=(const PendingLinks&) = delete;
    ~PendingLinks() { release(); }

    // Stores the link of an input; returns whether it replaces an earlier one that was not `null`.
    bool store(interfaces::IInput* input, PendingLink link) {
        Waiting* earlier = find(input);
        if (!earlier) {
            storeNew(input, std::move(link));
            return false;
        }
        const bool wasNull = earlier->link.isNull();
        earlier->link = std::move(link);
        return !wasNull;
    }

    // Stores the link of an input that was made by the same statement, and so has no earlier one.
    void storeNew(interfaces::IInput* input, PendingLink link) {
        waiting_.push({input, std::move(link)});
        input->retain();
    }

    // Calls `resolve(input, link)` for every input that is still in the scene, and releases the inputs. The order is
    // that of the text, so that the log is deterministic. Calls `expect(names)` before each batch with the node names
    // of its links, so that the scene can prefetch them.
    template <class Resolve, class Expect> void resolveAll(Resolve resolve, Expect expect) {
        constexpr std::size_t prefetchBatch = 32;
        std::array<const String*, prefetchBatch> names;
        for (std::size_t i = 0; i < waiting_.size(); ++i) {
            if (i % prefetchBatch == 0) {
                const std::size_t count = std::min(prefetchBatch, waiting_.size() - i);
                for (std::size_t k = 0; k < count; ++k)
                    names[k] = &waiting_[i + k].link.node;
                expect(std::span<const String* const>(names.data(), count));
            }
            if (waiting_[i].input->isAttached())
                resolve(waiting_[i].input, waiting_[i].link);
        }
        release();
    }

private:
    struct Waiting {
        interfaces::IInput* input; // holds a reference
        PendingLink link;
    };

    // Inputs that are created in sequence are close in memory, and links arrive in much the same order. Stretches of
    // addresses therefore map to consecutive slots; random slots would cost a cache miss for each link. A keyed hash
    // places the stretches, so that a text cannot provoke collisions. Longer stretches would cluster.
    [[nodiscard]] std::size_t home(const interfaces::IInput* input) const noexcept {
        constexpr u64 stretch = 64;
        const u64 place = reinterpret_cast<std::uintptr_t>(input) / (2 * alignof(void*));
        return (place % stretch + keyedHash(place / stretch)) & (slots_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t slot) const noexcept { return (slot + 1) & (slots_.size() - 1); }

    // The link of an input, or null. Builds the table: if that throws std::bad_alloc, the links are unchanged.
    [[nodiscard]] Waiting* find(const interfaces::IInput* input) {
        enterNew();
        for (std::size_t slot = home(input); slots_[slot] != 0; slot = next(slot))
            if (waiting_[slots_[slot] - 1].input == input)
                return &waiting_[slots_[slot] - 1];
        return nullptr;
    }

    // Enters what was stored since the last search. Most texts link each input once, in the statement that makes it,
    // and need no table.
    void enterNew() {
        growFor(waiting_.size());
        for (; entered_ < waiting_.size(); ++entered_) {
            std::size_t slot = home(waiting_[entered_].input);
            while (slots_[slot] != 0)
                slot = next(slot);
            slots_[slot] = static_cast<u32>(entered_ + 1);
        }
    }

    // Keeps the table at most half full. A larger one starts empty.
    void growFor(std::size_t count) {
        if (2 * count < slots_.size())
            return;
        if (count >= std::numeric_limits<u32>::max())
            throw std::bad_alloc(); // a slot cannot hold the index
        slots_ = std::vector<u32>(std::max<std::size_t>(16, 2 * std::bit_ceil(count + 1)));
        entered_ = 0;
    }

    void release() {
        for (const Waiting& each : waiting_)
            each.input->release();
        waiting_.clear();
        slots_.clear();
        entered_ = 0;
    }

    ds::Vector<Waiting> waiting_;
    std::vector<u32> slots_;  // hash table by input: an index into waiting_ plus 1, or 0 if free
    std::size_t entered_ = 0; // so many of waiting_ are in the table
};

} // namespace vor::velmo_sdk::impl

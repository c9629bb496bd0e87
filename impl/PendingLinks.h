// The links of one kind that wait for the end of the text: one for each input, the later one winning.
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/Hash.h"
#include "scene/core/Log.h"
#include "scene/core/Vector.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <vector>

namespace vor::velmo_sdk::impl {

// What an input is to be linked to, as the text has it: a node, or an output of one, or `null`, which is
// neither. The names stand apart, as short texts take no memory of their own.
struct PendingLink {
    String node;     // of a path that has not just two parts, all of it
    String output{}; // empty for a path that has not two parts, and for a reference
    TextPosition position{};
    bool isWithNode = false; // the path began with a dot

    [[nodiscard]] bool isNull() const { return output.isEmpty() && node == "null"; }

    // The path, as it was written.
    [[nodiscard]] String source() const {
        const String path = output.isEmpty() ? node : node + "." + output;
        return isWithNode ? "." + path : path;
    }
};

// Holds a reference on every input that it has a link for, so that an input may be taken out of the
// scene before its link is made.
class PendingLinks {
public:
    PendingLinks() = default;
    PendingLinks(const PendingLinks&) = delete;
    PendingLinks& operator=(const PendingLinks&) = delete;
    ~PendingLinks() { release(); }

    // Whether it replaces an earlier one that was not `null`.
    bool store(interfaces::IInput* input, PendingLink link) {
        makeRoom();
        std::size_t slot = home(input);
        for (; slots_[slot] != 0; slot = next(slot)) {
            Waiting& earlier = waiting_[slots_[slot] - 1];
            if (earlier.input == input) {
                const bool wasNull = earlier.link.isNull();
                earlier.link = std::move(link);
                return !wasNull;
            }
        }
        waiting_.push({input, std::move(link)});
        slots_[slot] = static_cast<u32>(waiting_.size());
        input->retain();
        return false;
    }

    // Calls `resolve(input, link)` for every input that is still in the scene, in the order of the text
    // so that two runs log the same, and lets go of the inputs. Before some of them, `expect(names)` is told
    // which nodes they are about.
    template <class Resolve, class Expect> void resolveAll(Resolve resolve, Expect expect) {
        constexpr std::size_t atOnce = 32;
        std::array<const String*, atOnce> names;
        for (std::size_t i = 0; i < waiting_.size(); ++i) {
            if (i % atOnce == 0) {
                const std::size_t count = std::min(atOnce, waiting_.size() - i);
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
        interfaces::IInput* input; // with a reference
        PendingLink link;
    };

    // Inputs that are made one after the other stand near each other in memory, and here too: links come in
    // much the same order, and a place at random would have to be waited for. Where a stretch of them begins is
    // no text's to choose. (Long stretches would pile up in some places.)
    [[nodiscard]] std::size_t home(const interfaces::IInput* input) const noexcept {
        constexpr u64 stretch = 64;
        const u64 place = reinterpret_cast<std::uintptr_t>(input) / (2 * alignof(void*));
        return (place % stretch + keyedHash(place / stretch)) & (slots_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t slot) const noexcept { return (slot + 1) & (slots_.size() - 1); }

    // For one more input in the table, which is at most half full.
    void makeRoom() {
        if (2 * (waiting_.size() + 1) <= slots_.size())
            return;
        if (slots_.size() > std::numeric_limits<u32>::max())
            throw std::bad_alloc(); // more links than can be counted
        slots_ = std::vector<u32>(std::max<std::size_t>(16, 2 * slots_.size()));
        for (std::size_t i = 0; i < waiting_.size(); ++i) {
            std::size_t slot = home(waiting_[i].input);
            while (slots_[slot] != 0)
                slot = next(slot);
            slots_[slot] = static_cast<u32>(i + 1);
        }
    }

    void release() {
        for (const Waiting& each : waiting_)
            each.input->release();
        waiting_.clear();
        slots_.clear();
    }

    ds::Vector<Waiting> waiting_;
    std::vector<u32> slots_; // by input, a place in waiting_ + 1; 0 is free
};

} // namespace vor::velmo_sdk::impl

// The links of one kind that wait for the end of the text: one for each input, the later one winning.
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/HashMap.h"
#include "scene/core/Log.h"

#include <cstdint>

namespace vor::velmo_sdk::impl {

// What an input is to be linked to, as the text has it: an output's path or a node's name, or `null`,
// which is neither.
struct PendingLink {
    String source;
    TextPosition position;

    [[nodiscard]] bool isNull() const { return source == "null"; }
};

// Holds a reference on every input that it has a link for, so that an input may be taken out of the
// scene before its link is made.
class PendingLinks {
public:
    PendingLinks() = default;
    PendingLinks(const PendingLinks&) = delete;
    PendingLinks& operator=(const PendingLinks&) = delete;
    ~PendingLinks() { release(); }

    void store(interfaces::IInput* input, PendingLink link) {
        makeRoom();
        const u64 key = keyOf(input);
        const i64 place = places_.find(key, [&](std::size_t i) { return waiting_[i].input == input; });
        if (place >= 0) {
            waiting_[static_cast<std::size_t>(place)].link = std::move(link);
            return;
        }
        waiting_.push({input, std::move(link)});
        places_.insert(key, waiting_.size() - 1);
        input->retain();
    }

    // Calls `resolve(input, link)` for every input that is still in the scene, in the order of the text
    // so that two runs log the same, and lets go of the inputs.
    template <class Resolve> void resolveAll(Resolve resolve) {
        for (const Waiting& each : waiting_)
            if (each.input->isAttached())
                resolve(each.input, each.link);
        release();
    }

private:
    struct Waiting {
        interfaces::IInput* input; // with a reference
        PendingLink link;
    };

    static u64 keyOf(const interfaces::IInput* input) noexcept { return reinterpret_cast<std::uintptr_t>(input); }

    // For one more place in the index.
    void makeRoom() {
        const std::size_t count = waiting_.size() + 1;
        if (places_.hasRoomFor(count))
            return;
        ds::BucketIndex places;
        places.rebuild(count);
        for (std::size_t i = 0; i < waiting_.size(); ++i)
            places.insert(keyOf(waiting_[i].input), i);
        places_ = std::move(places);
    }

    void release() {
        for (const Waiting& each : waiting_)
            each.input->release();
        waiting_.clear();
    }

    ds::Vector<Waiting> waiting_;
    ds::BucketIndex places_; // in waiting_, by input
};

} // namespace vor::velmo_sdk::impl

// The links of one kind that wait for the end of the text: one for each input, the later one winning.
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/HashMap.h"
#include "scene/core/Log.h"

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
        if (const std::size_t* place = places_.find(input)) {
            waiting_[*place].link = std::move(link);
            return;
        }
        places_.set(input, waiting_.size());
        waiting_.push({input, std::move(link)});
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

    void release() {
        for (const Waiting& each : waiting_)
            each.input->release();
        waiting_.clear();
    }

    ds::Vector<Waiting> waiting_;
    ds::HashMap<interfaces::IInput*, std::size_t> places_; // in waiting_
};

} // namespace vor::velmo_sdk::impl

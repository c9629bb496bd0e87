// The links of one kind that wait for the end of the text: one for each input, the later one winning.
#pragma once

#include "impl/AssignInfo.h"
#include "scene/Interfaces.h"
#include "scene/core/HashMap.h"

namespace vor::velmo_sdk::impl {

// Holds a reference on every input that it has a record for, so that an input may be taken out of the
// scene before its link is made.
class PendingLinks {
public:
    PendingLinks() = default;
    PendingLinks(const PendingLinks&) = delete;
    PendingLinks& operator=(const PendingLinks&) = delete;
    ~PendingLinks() { release(); }

    void store(interfaces::IInput* input, AssignInfo info) {
        if (AssignInfo* earlier = records_.find(input)) {
            *earlier = std::move(info);
            return;
        }
        inputs_.push(input);
        input->retain();
        records_.set(input, std::move(info));
    }

    // Calls `resolve(input, record)` for every input that is still in the scene, in the order of the
    // text so that two runs log the same, and lets go of the inputs.
    template <class Resolve> void resolveAll(Resolve resolve) {
        for (interfaces::IInput* input : inputs_)
            if (input->isAttached())
                resolve(input, records_.get(input));
        release();
    }

    [[nodiscard]] std::size_t size() const noexcept { return records_.size(); }
    [[nodiscard]] const AssignInfo* find(interfaces::IInput* input) const noexcept { return records_.find(input); }

private:
    void release() {
        for (interfaces::IInput* input : inputs_)
            input->release();
        inputs_.clear();
    }

    ds::HashMap<interfaces::IInput*, AssignInfo> records_;
    ds::Vector<interfaces::IInput*> inputs_; // each with a reference
};

} // namespace vor::velmo_sdk::impl

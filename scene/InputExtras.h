// Children, links and enumeration of an input. Allocated on demand, because most inputs have none.
#pragma once

#include "scene/Input.h"
#include "scene/Link.h"
#include "scene/NamedList.h"
#include "scene/SlabPool.h"

namespace vor::velmo_sdk::impl {

struct Input::Extras : Pooled {
    explicit Extras(Input* input) noexcept : connection(input), reference(input) {}

    NamedList<Input, 1, 3> children;
    u32 untypedElements = 0;
    u32 nullElements = 0;
    Link connection; // in the list of `output`
    Output* output = nullptr;
    Link reference; // in the list of `node`
    Node* node = nullptr;
    std::shared_ptr<const StringVector> enumeration;
};

// Inline, because making inputs is what reading a scene is mostly about.
inline Input::Input(Node& node, Input* parent, String name, u64 index, AttrData&& value) noexcept
    : node_(&node), parent_(parent), name_(std::move(name)), value_(std::move(value)),
      index_(index % NamedList<Input, 1, 3>::maxItems) {}

} // namespace vor::velmo_sdk::impl

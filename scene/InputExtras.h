// Links, children and enumeration of an input. Allocated on demand, because most inputs have none.
#pragma once

#include "scene/Input.h"
#include "scene/Link.h"
#include "scene/NameTable.h"
#include "scene/NamedList.h"
#include "scene/SlabPool.h"

namespace vor::velmo_sdk::impl {

struct Input::Content : Pooled {
    NamedList<Input, 1, 3> children;
    u32 untypedElements = 0;
    u32 nullElements = 0;
    std::shared_ptr<const StringVector> enumeration;
};

// 64 bytes, because linked inputs without content are common.
struct Input::Extras : Pooled, Link<Output>, Link<Node> {
    explicit Extras(Input* owner) noexcept : input(owner) {}

    [[nodiscard]] Link<Output>& connection() noexcept { return *this; }
    [[nodiscard]] Link<Node>& reference() noexcept { return *this; }

    Input* input;
    std::unique_ptr<Content> content;
};

template <class Target> Input* Input::linkedBy(Link<Target>* link) noexcept {
    return static_cast<Extras*>(link)->input;
}

// Inline, because making inputs is what reading a scene is mostly about.
inline Input::Input(Node& node, Input* parent, String name, u64 index, AttrData&& value) noexcept
    : node_(&node), parent_(parent), name_(std::move(name)), value_(std::move(value)),
      index_(index % NamedList<Input, 1, 3>::maxItems) {}

} // namespace vor::velmo_sdk::impl

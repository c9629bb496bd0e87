// Output: a named place of a node that inputs connect to. It carries no value.
#pragma once

#include "scene/Interfaces.h"
#include "scene/Link.h"
#include "scene/SlabPool.h"
#include "scene/core/Export.h"

namespace vor::velmo_sdk::impl {

class Node;

class VRN_API Output final : public interfaces::IOutput, public Pooled {
public:
    Output(Node& node, String name) : node_(node), name_(std::move(name)) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() override; // undoes the connections

    [[nodiscard]] String name() const override { return name_; }
    [[nodiscard]] const String& key() const noexcept { return name_; }
    [[nodiscard]] Node* node() const noexcept { return &node_; }

    // `node.output`.
    [[nodiscard]] String label() const;

    // How many inputs are connected; linear in the answer.
    [[nodiscard]] std::size_t connectionCount() const noexcept;

private:
    friend class Input;
    Node& node_;
    String name_;
    Link* connections_ = nullptr;
};

} // namespace vor::velmo_sdk::impl

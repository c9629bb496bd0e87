// Output: a named port of a node that inputs connect to. It has no value.
//
//     input->connect(scene.findNode("noise")->findOutput("result"));
//
// The node owns its outputs and creates them in Node::findOutput(). They are removed with the node, which disconnects
// their inputs. An output that is retained (Handle.h) keeps its node alive after that, but accepts no connections. For
// threads and errors see Scene.h.
#pragma once

#include "scene/Interfaces.h"
#include "scene/Pooled.h"
#include "scene/core/Export.h"

namespace vor::velmo_sdk::impl {

template <class Target> class Link;
class Node;

class VRN_API Output final : public interfaces::IOutput, public Pooled {
public:
    Output(Node& node, String name) : node_(node), name_(std::move(name)) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() override = default;

    [[nodiscard]] String name() const override { return name_; }
    [[nodiscard]] const String& key() const noexcept { return name_; }
    [[nodiscard]] Node* node() const noexcept; // null after its removal

    // `node.output`.
    [[nodiscard]] String label() const;

    // The number of connected inputs; linear in it.
    [[nodiscard]] std::size_t connectionCount() const noexcept;

    // Keeps the output alive after its removal. Each retain() needs one release().
    void retain() noexcept;
    void release() noexcept;

    // Whether the output is still part of its scene.
    [[nodiscard]] bool isAttached() const noexcept { return node() != nullptr; }

private:
    friend class Input;
    friend class Node;

    void disconnect() noexcept;

    Node& node_;
    String name_;
    Link<Output>* connections_ = nullptr;
};

} // namespace vor::velmo_sdk::impl

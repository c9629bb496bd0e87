// Handle: a reference to a node, input or output that stays valid when the object is removed.
//
//     Handle<Node> camera(scene.findNode("cam1"));
//     parseString(&scene, "remove cam1;");
//     if (const Node* node = camera.attached())       // null: the node is gone from the scene
//         use(*node);
//     print(camera->name());                          // still valid
//
// A Handle retains its object. When the object is removed or its scene is destroyed, the object is no longer attached:
// it keeps its name, but loses its links and what is below it, and accepts neither. A Handle to it may keep up to 2 MiB
// of the scene's memory.
//
// The reference counts are not atomic: to copy, assign or destroy a Handle is a change of the scene, which needs
// exclusive access. Handles of one scene need it among each other even after the scene is destroyed.
#pragma once

#include "scene/Input.h"
#include "scene/Node.h"
#include "scene/Output.h"

#include <utility>

namespace vor::velmo_sdk::impl {

// T is Node, Input or Output.
template <class T> class Handle {
public:
    Handle() noexcept = default; // to nothing
    explicit Handle(T* object) : object_(object) {
        if (object_)
            object_->retain();
    }
    Handle(const Handle& other) : Handle(other.object_) {}
    Handle(Handle&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Handle& operator=(Handle other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Handle() {
        if (object_)
            object_->release();
    }

    // The object if it is still part of its scene, otherwise null.
    [[nodiscard]] T* attached() const noexcept { return object_ && object_->isAttached() ? object_ : nullptr; }

    // The object, attached or not; null if there is none. Valid while a Handle to it is.
    [[nodiscard]] T* get() const noexcept { return object_; }
    [[nodiscard]] T* operator->() const noexcept { return object_; }
    [[nodiscard]] T& operator*() const noexcept { return *object_; }

    // Whether both refer to the same object.
    friend bool operator==(const Handle&, const Handle&) noexcept = default;

private:
    T* object_ = nullptr;
};

} // namespace vor::velmo_sdk::impl

// The interfaces of a scene model that the reader and its hosts use.
//
// The reader receives an IScene and casts it to the Scene of scene/Scene.h. A host that compiles the reader with
// another scene model derives the classes of that model from these (docs/host.md). A scene owns its nodes, inputs and
// outputs. Inputs also have a reference count: an input that was removed from its scene stays valid, without links and
// children, until the last reference to it is released.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

namespace vor::velmo_sdk::interfaces {

class INode;

class VRN_API IOutput {
public:
    virtual ~IOutput() = default;
    [[nodiscard]] virtual String name() const = 0;
};

class VRN_API IInput {
public:
    virtual ~IInput() = default;

    // The path: node, `.`, input, then `.member` and `[index]`. Linear in its length.
    [[nodiscard]] virtual String label() const = 0;

    // Connects the input to an output, which replaces its connection.
    virtual void connect(IOutput* output) = 0;
    virtual void disconnect() = 0;

    // Makes an input of type Node refer to `node`; null clears the reference.
    virtual void setNode(INode* node) = 0;

    virtual void retain() = 0;
    virtual void release() = 0;

    // Whether the input is still part of its scene.
    [[nodiscard]] virtual bool isAttached() const = 0;

    // The name of the type of its value, for messages.
    [[nodiscard]] virtual String typeName() const = 0;
};

class VRN_API INode {
public:
    virtual ~INode() = default;
    [[nodiscard]] virtual String name() const = 0;
    [[nodiscard]] virtual String type() const = 0;

    // The output of that name, or null.
    [[nodiscard]] virtual IOutput* findOutput(const String& name) = 0;
};

class VRN_API IScene {
public:
    virtual ~IScene() = default;
};

} // namespace vor::velmo_sdk::interfaces

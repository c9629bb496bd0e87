// The faces of a scene: what the reader and its hosts may ask of any scene model.
//
// The reader is handed an IScene and treats it as the Scene of scene/Scene.h, so whoever compiles it
// against a scene model of their own gives that model these bases. Nodes, inputs and outputs belong to
// their scene. Inputs carry a reference count besides: an input that was taken out of its scene stays
// valid, unlinked and empty, until the last reference to it is released.
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

    // The whole path as text: node, `.`, input, then `.member` and `[index]`. Linear in its length.
    [[nodiscard]] virtual String label() const = 0;

    // Binds the input to an output of another node; an earlier connection is undone.
    virtual void connect(IOutput* output) = 0;
    virtual void disconnect() = 0;

    // Makes a node-valued input refer to `node`; null clears it.
    virtual void setNode(INode* node) = 0;

    virtual void retain() = 0;
    virtual void release() = 0;

    // Whether the input is still part of its scene.
    [[nodiscard]] virtual bool isAttached() const = 0;

    // The name of its value's type, as messages print it.
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

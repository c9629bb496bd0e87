// Node: a named, typed object of a scene, with inputs and outputs.
//
//     for (const Node& node : scene.nodes())
//         for (const Input* input : node.inputs())
//             print(input->label(), input->typeName());
//
// Inputs and outputs keep their order of creation and are found by name in O(1).
//
// A scene owns its nodes; Scene::removeNode() destroys one, unless it is retained (Handle.h). A node that was removed
// keeps its name, its type and its outputs, but has no inputs, nothing is linked to it, and it accepts neither. The
// reference count is not atomic. For threads and errors see Scene.h.
#pragma once

#include "scene/Input.h"
#include "scene/NamedList.h"
#include "scene/Output.h"
#include "scene/core/Export.h"

namespace vor::velmo_sdk::impl {

class Scene;
class NodeType;

class VRN_API Node final : public interfaces::INode, public Pooled {
public:
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    [[nodiscard]] String name() const override { return name_; }
    [[nodiscard]] const String& key() const noexcept { return name_; }
    [[nodiscard]] String type() const override { return type_; }
    [[nodiscard]] bool isDefinition() const noexcept { return isDefinition_; }
    [[nodiscard]] Scene* scene() const noexcept { return scene_; } // null after its removal

    // Whether the node has an input of that name and type; Null matches any type.
    [[nodiscard]] bool hasInput(const String& name, AttrType type = AttrType::Null) const noexcept;
    [[nodiscard]] Input* input(const String& name) const noexcept; // or null
    [[nodiscard]] std::span<Input* const> inputs() noexcept { return inputs_.items(); }
    [[nodiscard]] std::span<const Input* const> inputs() const noexcept { return inputs_.items(); }

    // Creates an input with the zero value of its type. If the name is taken, returns that input unchanged; if the node
    // has been removed, null.
    Input* createInput(const String& name, AttrType type);
    Input* createArray(const String& name, AttrType elementType);

    // The input of that name. If it is missing, creates it with `value`, which is then moved from. Null if the node has
    // been removed.
    struct InputOrNew {
        Input* input;
        bool isNew;
    };
    InputOrNew inputOrNew(const String& name, AttrData& value);

    // Removes an input with everything below it. Returns false if no input has that name. Linear in the inputs.
    bool removeInput(const String& name);

    // The output of that name. Creates a missing one, unless the catalogue declares the outputs of the node's type, the
    // scene has strict outputs, or the node has been removed; then returns null.
    [[nodiscard]] Output* findOutput(const String& name) override;
    [[nodiscard]] std::span<const Output* const> outputs() const noexcept { return outputs_.items(); }

    // Keeps the node alive after its removal. Each retain() needs one release().
    void retain() noexcept { ++holders_; }
    void release() noexcept;

    // Whether the node is still part of its scene.
    [[nodiscard]] bool isAttached() const noexcept { return scene_ != nullptr; }

private:
    friend class Scene;
    friend class Input;
    friend class Output;

    Node(Scene& scene, String type, String name, bool isDefinition);
    ~Node() override;

    Input* addInput(const String& name, AttrData value);
    Input* newInput(const String& name, AttrData& value);
    Output* addOutput(const String& name);
    void copyInputsFrom(const Node& definition);
    void addCatalogued(const NodeType& type);
    void detach() noexcept;

    Scene* scene_;
    String type_;
    String name_;
    NamedList<Input, 6, 12> inputs_;
    NamedList<Output, 1, 3> outputs_;
    Link<Node>* references_ = nullptr; // of the inputs that refer to this node
    Node* previous_ = nullptr;         // in the scene's order
    Node* next_ = nullptr;
    u32 holders_ = 1; // the scene
    bool isDefinition_;
    bool isCatalogued_ = false;
};

} // namespace vor::velmo_sdk::impl

// Node: a named, typed thing of a scene, with inputs and outputs.
//
//     for (const Node& node : scene.nodes())
//         for (const Input* input : node.inputs())
//             print(input->label(), input->typeName());
//
// A node belongs to its scene and goes with it or with Scene::removeNode(). Inputs and outputs keep
// their order of creation and are found by name in O(1).
#pragma once

#include "scene/Input.h"
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
    [[nodiscard]] Scene& scene() const noexcept { return scene_; }

    // Whether there is an input of that name, and of that type unless `type` is Null.
    [[nodiscard]] bool hasInput(const String& name, AttrType type = AttrType::Null) const noexcept;
    [[nodiscard]] Input* input(const String& name) const noexcept; // or null
    [[nodiscard]] std::span<Input* const> inputs() noexcept { return inputs_.items(); }
    [[nodiscard]] std::span<const Input* const> inputs() const noexcept { return inputs_.items(); }

    // A new input with the zero value of its type. The input of that name, unchanged, if there is one.
    Input* createInput(const String& name, AttrType type);
    Input* createArray(const String& name, AttrType elementType);

    // The output of that name, or null. A node whose type is in the catalogue has the catalogue's
    // outputs; any other grows the output, unless the scene has strict outputs.
    [[nodiscard]] Output* findOutput(const String& name) override;
    [[nodiscard]] std::span<const Output* const> outputs() const noexcept { return outputs_.items(); }

private:
    friend class Scene;
    friend class Input;

    Node(Scene& scene, String type, String name, bool isDefinition);
    ~Node() override;

    Input* addInput(const String& name, AttrData value);
    Output* addOutput(const String& name);
    void copyInputsFrom(const Node& definition);
    void addCatalogued(const NodeType& type);

    Scene& scene_;
    String type_;
    String name_;
    NamedList<Input, 6> inputs_;
    NamedList<Output, 3> outputs_;
    Link* references_ = nullptr; // the inputs that refer to this node
    Node* previous_ = nullptr;   // in the scene's order
    Node* next_ = nullptr;
    bool isDefinition_;
    bool isCatalogued_ = false;
};

} // namespace vor::velmo_sdk::impl

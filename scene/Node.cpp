#include "scene/Node.h"

#include "scene/SceneStorage.h"

namespace vor::velmo_sdk::impl {

Node::Node(Scene& scene, String type, String name, bool isDefinition)
    : scene_(&scene), type_(std::move(type)), name_(std::move(name)), isDefinition_(isDefinition) {}

Node::~Node() {
    while (Output* output = outputs_.takeLast())
        delete output;
}

void Node::release() noexcept {
    if (--holders_ == 0)
        delete this;
}

// Takes the node out of its scene, which gives up its reference.
void Node::detach() noexcept {
    while (references_)
        Input::linkedBy(references_)->setNode(nullptr);
    for (Output* output : outputs_.items())
        output->disconnect();
    while (Input* input = inputs_.takeLast())
        Input::detach(input);
    scene_ = nullptr;
    release();
}

bool Node::hasInput(const String& name, AttrType type) const noexcept {
    const Input* found = input(name);
    return found && (type == AttrType::Null || found->type() == type);
}

Input* Node::input(const String& name) const noexcept { return inputs_.find(name); }

Input* Node::createInput(const String& name, AttrType type) { return addInput(name, AttrData::zero(type)); }

Input* Node::createArray(const String& name, AttrType elementType) {
    return addInput(name, AttrData::array(elementType));
}

Node::InputOrNew Node::inputOrNew(const String& name, AttrData& value) {
    if (Input* existing = input(name))
        return {existing, false};
    Input* added = newInput(name, value);
    return {added, added != nullptr};
}

bool Node::removeInput(const String& name) {
    Input* removed = input(name);
    if (!removed)
        return false;
    inputs_.erase(removed);
    Input::removeFrom(inputs_.items(), removed);
    return true;
}

Input* Node::addInput(const String& name, AttrData value) { return inputOrNew(name, value).input; }

// Creates an input with a name that no other has, unless the node has been removed.
Input* Node::newInput(const String& name, AttrData& value) {
    if (!scene_)
        return nullptr;
    struct Release {
        void operator()(Input* input) const noexcept { input->release(); }
    };
    std::unique_ptr<Input, Release> input(new (scene_->storage_->inputs)
                                              Input(*this, nullptr, name, inputs_.size(), std::move(value)));
    inputs_.push(input.get());
    return input.release();
}

Output* Node::findOutput(const String& name) {
    Output* output = outputs_.find(name);
    if (output || isCatalogued_ || !scene_ || scene_->hasStrictOutputs())
        return output;
    return addOutput(name);
}

Output* Node::addOutput(const String& name) {
    std::unique_ptr<Output> output(new (scene_->storage_->outputs) Output(*this, name));
    outputs_.push(output.get());
    return output.release();
}

void Node::copyInputsFrom(const Node& definition) {
    for (const Input* input : definition.inputs())
        addInput(input->name(), AttrData())->copyFrom(*input);
}

// Adds the inputs and outputs that the catalogue declares and the node does not have.
void Node::addCatalogued(const NodeType& type) {
    isCatalogued_ = true;
    for (const InputType& each : type.inputs()) {
        if (each.isOptional || hasInput(each.name))
            continue;
        Input* input = addInput(each.name, each.initialValue());
        input->setLocked(each.isLocked);
        input->setLinkOnly(each.isLinkOnly);
        if (!each.enumeration.isEmpty())
            input->setEnumeration(each.enumeration);
    }
    for (const String& name : type.outputs())
        if (!outputs_.find(name))
            addOutput(name);
}

} // namespace vor::velmo_sdk::impl

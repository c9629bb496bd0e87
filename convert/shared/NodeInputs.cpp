#include "convert/shared/NodeInputs.h"

#include "scene/Scene.h"

#include <algorithm>

namespace vrn::convert {

namespace {

// The object that contains the last name of a path, created if need be; null if that is the node itself.
Input* ownerAt(Node& node, std::string_view& path) {
    Input* owner = nullptr;
    for (std::size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.')) {
        const String name(path.substr(0, dot));
        owner = owner ? owner->createInput(name, AttrType::Object) : node.createInput(name, AttrType::Object);
        path.remove_prefix(dot + 1);
    }
    return owner;
}

Input& inputAt(Node& node, std::string_view path, AttrType type) {
    Input* owner = ownerAt(node, path);
    return owner ? *owner->createInput(String(path), type) : *node.createInput(String(path), type);
}

} // namespace

void set(Node& node, const char* name, AttrData value) {
    Input* input = node.createInput(name, value.type());
    input->assign(std::move(value));
}

void setMember(Input& object, const char* name, AttrData value) {
    Input* input = object.createInput(name, value.type());
    input->assign(std::move(value));
}

void setText(Node& node, const char* name, std::string_view text) { set(node, name, AttrData::string(text)); }

void setNumbers(Node& node, const char* name, AttrType type, std::span<const double> numbers) {
    set(node, name, valueOf(type, numbers));
}

void setReference(Node& node, const char* name, Node& target) {
    node.createInput(name, AttrType::Node)->setNode(&target);
}

void connect(Node& node, const char* name, Node& source, const char* output) {
    if (Output* from = source.findOutput(output))
        node.createInput(name, AttrType::Null)->connect(from);
}

void setAt(Node& node, std::string_view path, AttrData value) {
    Input& input = inputAt(node, path, value.type());
    input.assign(std::move(value));
}

void connectAt(Node& node, std::string_view path, Node& source, const char* output) {
    inputAt(node, path, AttrType::Null).connect(source.findOutput(output));
}

Input* appendObject(Node& node, std::string_view path) {
    Input* owner = ownerAt(node, path);
    const String name(path);
    Input* array = owner ? owner->input(name) : node.input(name);
    if (!array)
        array = owner ? owner->createArray(name, AttrType::Object) : node.createArray(name, AttrType::Object);
    return array->appendElement();
}

AttrData valueOf(AttrType type, std::span<const double> numbers) {
    AttrData value = AttrData::zero(type);
    std::ranges::copy(numbers.first(value.components().size()), value.components().begin());
    return value;
}

} // namespace vrn::convert

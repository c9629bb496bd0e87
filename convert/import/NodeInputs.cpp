#include "convert/import/NodeInputs.h"

#include "scene/Scene.h"

#include <algorithm>

namespace vrn::convert {

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

AttrData valueOf(AttrType type, std::span<const double> numbers) {
    AttrData value = AttrData::zero(type);
    std::ranges::copy(numbers.first(value.components().size()), value.components().begin());
    return value;
}

} // namespace vrn::convert

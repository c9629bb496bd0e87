#include "tests/support/Invariants.h"

#include "scene/Walk.h"

#include <algorithm>
#include <map>
#include <set>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

bool isInScene(const Scene& scene, const Node* node) { return scene.findNode(node->key()) == node; }

bool hasUniqueNames(std::span<const Input* const> inputs) {
    std::set<std::string_view> names;
    for (const Input* input : inputs)
        if (!names.insert(input->key().view()).second)
            return false;
    return true;
}

// Elements have the type of their array. Exceptions: elements that are still untyped, and node references that were set
// before the array had a type.
bool fitsItsArray(const Input& element) {
    const AttrType expected = element.parent()->elementType();
    return element.type() == expected || expected == AttrType::Null || element.type() == AttrType::Null ||
           element.type() == AttrType::Node;
}

u64 countNull(const Input& array) {
    return static_cast<u64>(
        std::ranges::count_if(array.children(), [](const Input* e) { return e->type() == AttrType::Null; }));
}

u64 countUntyped(const Input& array) {
    u64 count = 0;
    for (const Input* element : array.children()) {
        const bool isBuffer = array.elementType() == AttrType::Buffer &&
                              (element->type() == AttrType::Null || element->type() == AttrType::Buffer);
        const bool isArray = array.elementType() == AttrType::Array &&
                             (element->type() == AttrType::Null || element->type() == AttrType::Array);
        count +=
            (isBuffer && element->dataType() == DataType::Null) || (isArray && element->elementType() == AttrType::Null)
                ? 1U
                : 0U;
    }
    return count;
}

const char* brokenLink(const Scene& scene, const Input& input) {
    if (const Output* output = input.connection()) {
        if (!isInScene(scene, output->node()))
            return "connected to a node that is gone";
        const auto outputs = std::as_const(*output->node()).outputs();
        if (std::ranges::find(outputs, output) == outputs.end())
            return "connected to an output that is gone";
    }
    if (const Node* node = input.nodeValue()) {
        if (input.type() != AttrType::Node)
            return "refers to a node without being a Node";
        if (!isInScene(scene, node))
            return "refers to a node that is gone";
    }
    return nullptr;
}

const char* brokenPlace(const Node& node, const Input& input) {
    if (input.node() != &node || !input.isAttached())
        return "not of its node";
    const auto siblings = input.parent() ? std::as_const(*input.parent()).children() : node.inputs();
    if (input.index() >= siblings.size() || siblings[input.index()] != &input)
        return "not in its place";
    if (input.isElement())
        return fitsItsArray(input) ? nullptr : "an element of another type than its array's";
    const Input* found = input.parent() ? input.parent()->input(input.key()) : node.input(input.key());
    return found == &input ? nullptr : "not found by its name";
}

const char* brokenValue(const Input& input) {
    const AttrData& value = input.value();
    if (value.type() == AttrType::Buffer) {
        const u64 size = value.count() * elementLayout(value.dataType()).elementSize();
        return value.bytes().size() == size ? nullptr : "a buffer of another size than count times element";
    }
    if (!input.children().empty() && value.type() != AttrType::Array && value.type() != AttrType::Object)
        return "children of a value that has none";
    if (value.type() == AttrType::Object && !hasUniqueNames(input.children()))
        return "two members of one name";
    if (value.type() == AttrType::Array && input.untypedElements() != countUntyped(input))
        return "untyped elements miscounted";
    if (value.type() == AttrType::Array && input.nullElements() != countNull(input))
        return "elements of type Null miscounted";
    if (value.type() == AttrType::String && !value.asString())
        return "a text that is none";
    return nullptr;
}

} // namespace

std::string brokenInvariant(const Scene& scene) {
    u64 nodes = 0;
    std::map<const Output*, std::size_t> connections;
    for (const Node& node : scene.nodes()) {
        ++nodes;
        if (!isInScene(scene, &node))
            return std::string(node.key().view()) + ": not found by its name";
        if (!hasUniqueNames(node.inputs()))
            return std::string(node.key().view()) + ": two inputs of one name";
        std::string broken;
        forEachInput(node, [&](const Input& input) {
            if (input.connection())
                ++connections[input.connection()];
            const char* what = brokenPlace(node, input);
            what = what ? what : brokenValue(input);
            what = what ? what : brokenLink(scene, input);
            if (what && broken.empty())
                broken = std::string(input.label().view()) + ": " + what;
        });
        if (!broken.empty())
            return broken;
    }
    for (const Node& node : scene.nodes())
        for (const Output* output : node.outputs())
            if (output->connectionCount() != connections[output])
                return std::string(output->label().view()) + ": knows of other connections than there are";
    return nodes == scene.nodeCount() ? std::string() : "the count of nodes is wrong";
}

} // namespace vrn::test

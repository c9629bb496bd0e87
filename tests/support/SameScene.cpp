#include "tests/support/SameScene.h"

#include "scene/Walk.h"

#include <algorithm>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

std::string nameOf(const Node* node) { return node ? node->name().buf() : "nothing"; }
std::string nameOf(const Output* output) { return output ? output->label().buf() : "nothing"; }

std::string difference(const Input& a, const Input& b) {
    if (a.key() != b.key() || a.index() != b.index())
        return b.label().buf() + std::string(" is in its place");
    if (a.type() != b.type())
        return std::string("types ") + attrTypeName(a.type()) + " and " + attrTypeName(b.type());
    if (a.elementType() != b.elementType())
        return std::string("element types ") + attrTypeName(a.elementType()) + " and " + attrTypeName(b.elementType());
    if (a.dataType() != b.dataType())
        return std::string("data types ") + dataTypeName(a.dataType()) + " and " + dataTypeName(b.dataType());
    if (!(a.value() == b.value()))
        return "other values";
    if (nameOf(a.nodeValue()) != nameOf(b.nodeValue()))
        return "nodes " + nameOf(a.nodeValue()) + " and " + nameOf(b.nodeValue());
    if (nameOf(a.connection()) != nameOf(b.connection()))
        return "connections " + nameOf(a.connection()) + " and " + nameOf(b.connection());
    return a.size() == b.size() ? "" : "other children";
}

std::vector<const Input*> inputsOf(const Node& node) {
    std::vector<const Input*> inputs;
    forEachInput(node, [&](const Input& input) { inputs.push_back(&input); });
    return inputs;
}

std::string difference(const Node& a, const Node& b) {
    if (a.name() != b.name() || a.type() != b.type() || a.isDefinition() != b.isDefinition())
        return "node " + nameOf(&a) + " is where " + nameOf(&b) + " is, or of another type";
    const auto mine = inputsOf(a);
    const auto others = inputsOf(b);
    for (std::size_t i = 0; i < std::min(mine.size(), others.size()); ++i)
        if (const std::string found = difference(*mine[i], *others[i]); !found.empty())
            return mine[i]->label().buf() + (": " + found);
    return mine.size() == others.size() ? "" : "node " + nameOf(&a) + ": other inputs";
}

} // namespace

std::string firstDifference(const Scene& a, const Scene& b) {
    if (a.fileVersion() != b.fileVersion() || a.fileTime() != b.fileTime())
        return "version or time";
    if (!std::ranges::equal(a.fileComments(), b.fileComments()))
        return "comments";
    auto other = b.nodes().begin();
    for (const Node& node : a.nodes()) {
        if (other == b.nodes().end())
            return "node " + nameOf(&node) + " is missing";
        if (std::string found = difference(node, *other); !found.empty())
            return found;
        ++other;
    }
    return other == b.nodes().end() ? "" : "there are more nodes";
}

} // namespace vrn::test

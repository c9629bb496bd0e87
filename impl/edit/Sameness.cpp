#include "impl/edit/Sameness.h"

#include "scene/InputCursor.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

bool isSameNode(const Node* a, const Node* b) { return a && b ? a->key() == b->key() : a == b; }

bool isSameOutput(const Output* a, const Output* b) {
    return a && b ? a->key() == b->key() && isSameNode(a->node(), b->node()) : a == b;
}

bool isSameInput(const Input& a, const Input& b) {
    return a.key() == b.key() && a.value() == b.value() && isSameNode(a.nodeValue(), b.nodeValue()) &&
           isSameOutput(a.connection(), b.connection());
}

// Walks the inputs of both nodes in step.
std::optional<String> differenceOf(const Node& a, const Node& b) {
    if (a.key() != b.key() || a.type() != b.type() || a.isDefinition() != b.isDefinition())
        return a.name();
    InputCursor mine(a.inputs());
    InputCursor other(b.inputs());
    while (!mine.isDone()) {
        if (mine.isAtEnd() != other.isAtEnd())
            return mine.isAtEnd() ? (*other).label() : (*mine).label();
        if (mine.isAtEnd()) {
            for (InputCursor* cursor : {&mine, &other}) {
                cursor->leave();
                cursor->next();
            }
            continue;
        }
        if (!isSameInput(*mine, *other))
            return (*mine).label();
        mine.enter();
        other.enter();
    }
    return other.isDone() ? std::nullopt : std::optional((*other).label());
}

} // namespace

std::optional<String> firstDifference(const Scene& a, const Scene& b) {
    if (a.fileVersion() != b.fileVersion() || a.fileTime() != b.fileTime() ||
        !std::ranges::equal(a.fileComments(), b.fileComments()))
        return String();
    auto other = b.nodes().begin();
    for (const Node& node : a.nodes()) {
        if (other == b.nodes().end())
            return node.name();
        if (std::optional<String> found = differenceOf(node, *other))
            return found;
        ++other;
    }
    return other == b.nodes().end() ? std::nullopt : std::optional(other->name());
}

} // namespace vor::velmo_sdk::impl

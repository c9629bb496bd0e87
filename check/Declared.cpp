#include "check/Declared.h"

#include "scene/InputPath.h"

#include <algorithm>
#include <vector>

namespace vrn::check {

using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

// The input and what contains it, outermost first.
static std::vector<const Input*> chainTo(const Input& input) {
    std::vector<const Input*> chain;
    for (const Input* each = &input; each; each = each->parent())
        chain.push_back(each);
    std::ranges::reverse(chain);
    return chain;
}

const Input* follow(const Input& from, std::string_view path) {
    const auto steps = stepsOf(path);
    if (!steps)
        return nullptr;
    const std::vector<const Input*> chain = chainTo(from);
    const Input* at = nullptr;
    for (std::size_t i = 0; i < steps->size(); ++i) {
        const std::string_view step = (*steps)[i];
        if (step == elementStep)
            at = i < chain.size() && chain[i]->parent() == at ? chain[i] : nullptr;
        else
            at = at ? at->input(step) : from.node()->input(step);
        if (!at)
            return nullptr;
    }
    return at;
}

bool hasContents(const Input& input) {
    if (input.linkedNode())
        return true;
    switch (valueKind(input.type())) {
    case ValueKind::Buffer:
        return input.value().count() != 0;
    case ValueKind::Array:
    case ValueKind::Object:
        return input.size() != 0;
    case ValueKind::String:
        return *input.value().asString() != '\0';
    case ValueKind::Null:
    case ValueKind::Node:
        return false;
    case ValueKind::Bool:
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
    case ValueKind::Components:
        break;
    }
    return true;
}

} // namespace vrn::check

#include "check/Names.h"

#include "check/Texts.h"
#include "scene/core/SimilarNames.h"

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk::impl;

void UnknownTypes::add(const Node& node) {
    const String type = node.type();
    const Node* definition = scene_.findNode(type);
    if (definition && definition->isDefinition()) // which has its own name as its type
        return;
    const auto [use, isNew] = uses_.try_emplace(std::string(type.view()), Use{&node, 0});
    ++use->second.nodes;
}

std::string UnknownTypes::suggestion(std::string_view type) const {
    SimilarNames similar(type);
    for (const std::string_view name : catalogue_.typeNames())
        similar.consider(name);
    return similar.question();
}

void UnknownTypes::report(Findings& findings) const {
    for (const auto& [type, use] : uses_) {
        const std::size_t others = use.nodes - 1;
        const std::string more = others == 0 ? "" : " and " + std::to_string(others) + " more";
        findings.add(*use.first, messages::unknownType, shortened(type).c_str(), shortened(use.first->key()).c_str(),
                     more.c_str(), suggestion(type).c_str());
    }
}

static const Input* siblingOf(const Input& input, const String& name) {
    return input.parent() ? input.parent()->input(name) : input.node()->input(name);
}

bool UnknownInputs::isSimilarToAny(const Input& input, Declarations declared) {
    const auto [found, isNew] = isSimilar_.try_emplace({declared.data(), std::string(input.key().view())}, false);
    if (isNew) {
        SimilarNames similar(input.key());
        for (const InputType& each : declared)
            similar.consider(each.name);
        found->second = !similar.list().empty();
    }
    return found->second;
}

void UnknownInputs::add(const Input& input, const NodeType& type, Declarations declared) {
    if (type.isOpen() && !isSimilarToAny(input, declared))
        return;
    SimilarNames similar(input.key());
    for (const InputType& each : declared) {
        const Input* intended = siblingOf(input, each.name);
        if (!intended || !findings_.isSet(*intended))
            similar.consider(each.name);
    }
    const std::string question = similar.question();
    if (type.isOpen() && question.empty())
        return;
    findings_.add(input, messages::unknownInput, pathText(input).c_str(), shortened(type.name()).c_str(),
                  question.c_str());
}

} // namespace vrn::check

#include "check/Links.h"

#include "check/Texts.h"

#include <algorithm>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk::impl;

void checkLink(const Declared& declared, const Catalogue& catalogue, Findings& findings) {
    const auto& [input, type, siblings] = declared;
    const Node* node = type.accepts.isEmpty() ? nullptr : input.linkedNode();
    if (!node || !catalogue.find(node->type()))
        return;
    if (std::ranges::find(type.accepts, node->type()) == type.accepts.end())
        findings.add(input, messages::wrongNode, pathText(input).c_str(), shortened(node->key()).c_str(),
                     shortened(node->type()).c_str(), eitherText({type.accepts.begin(), type.accepts.end()}).c_str());
}

} // namespace vrn::check

#include "convert/import/ImportContext.h"

#include "convert/import/AssimpValues.h"
#include "convert/import/NodeInputs.h"
#include "convert/import/NodeNames.h"

namespace vrn::convert {

Node* ImportContext::nodeOf(const aiString& name) const {
    const auto found = nodes.find(std::string(viewOf(name)));
    return found == nodes.end() ? nullptr : found->second.node;
}

Node& ImportContext::create(const char* type, std::string_view name, const char* fallback) {
    const std::string wanted = nodeNameFrom(name, fallback);
    std::string unique = wanted;
    Node* node = nullptr;
    while (!(node = scene.createNode(type, std::string_view(unique))))
        unique = wanted + '_' + std::to_string(++repeatedNodeNames[wanted] + 1);
    if (!name.empty())
        setText(*node, "name", name);
    return *node;
}

} // namespace vrn::convert

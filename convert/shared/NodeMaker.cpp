#include "convert/shared/NodeMaker.h"

#include "convert/shared/NodeInputs.h"
#include "convert/shared/NodeNames.h"
#include "scene/Scene.h"

namespace vrn::convert {

Node& NodeMaker::create(const char* type, std::string_view name, const char* fallback) {
    const std::string wanted = nodeNameFrom(name, fallback);
    std::string unique = wanted;
    Node* node = nullptr;
    while (!(node = scene_.createNode(type, std::string_view(unique))))
        unique = wanted + '_' + std::to_string(++repetitions_[wanted] + 1);
    if (!name.empty())
        setText(*node, "name", name);
    return *node;
}

} // namespace vrn::convert

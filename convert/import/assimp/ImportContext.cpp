#include "convert/import/assimp/ImportContext.h"

#include "convert/import/assimp/AssimpValues.h"

namespace vrn::convert {

Node* ImportContext::nodeOf(const aiString& name) const {
    const auto found = nodes.find(std::string(viewOf(name)));
    return found == nodes.end() ? nullptr : found->second;
}

} // namespace vrn::convert

#include "convert/import/assimp/ImportContext.h"

#include "convert/import/assimp/AssimpValues.h"

namespace vrn::convert {

Node* ImportContext::nodeOf(const aiString& name) const {
    const auto found = nodes.find(std::string(viewOf(name)));
    return found == nodes.end() ? nullptr : found->second;
}

Matrix ImportContext::meshMatrix(unsigned mesh) const {
    const auto found = meshMatrices.find(mesh);
    return found == meshMatrices.end() ? identity : found->second;
}

} // namespace vrn::convert

// In place of all other files of this folder if VRN_ASSIMP is off: the converter reads glTF only.
#include "convert/import/assimp/AssimpImport.h"

namespace vrn::convert {

std::set<std::string> assimpExtensions() { return {}; }

void importModel(const std::string& path, Scene&, const TexturePaths&, Losses&, const ReadOptions&,
                 const ReadListener&) {
    throw FileError(path, "this build has readers for .glb and .gltf only; the command `vrn convert` has others");
}

} // namespace vrn::convert

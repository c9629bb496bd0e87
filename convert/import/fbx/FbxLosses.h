// What an FBX file has that neither Assimp nor our own reader takes.
#pragma once

#include "convert/import/fbx/FbxScene.h"

namespace vrn::convert {

void reportUnread(const FbxScene& scene, Losses& losses);

} // namespace vrn::convert

// Imports the animations of an FBX file.
#pragma once

#include "convert/import/fbx/FbxScene.h"
#include "convert/shared/NodeMaker.h"

#include <unordered_map>

namespace vrn::convert {

// Creates an `animation` for each stack. `nodes` are those of the models, by their numbers. Linear and stepped curves
// keep their keys; where linear interpolation of the channels would differ from the file, such as between the keys of
// curves or of rotations about several axes, there are 30 keys a second.
void importFbxAnimations(const FbxScene& from, const std::unordered_map<i64, Node*>& nodes, NodeMaker& maker,
                         Losses& losses);

} // namespace vrn::convert

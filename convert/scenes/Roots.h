// The nodes of a scene that have no parent.
#pragma once

#include "convert/shared/NodeMaker.h"

#include <vector>

namespace vrn::convert {

// The transforms, instances, cameras and lights without a parent, in their order. Meshes that no node shows become
// visible by an instance each, which is new.
[[nodiscard]] std::vector<Node*> makeRoots(Scene& scene, NodeMaker& maker);

// Whether a node is a `scene`, which lists the roots that it shows.
[[nodiscard]] bool isSceneList(const Node& node);

} // namespace vrn::convert

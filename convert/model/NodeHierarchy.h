// The node hierarchy of a model: groups, transforms, instances, cameras and lights with their parents and transforms.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Adds the nodes of the hierarchy, links them to their parents and reads their local transforms.
void readHierarchy(ExportContext& context);

// The indices of the nodes without a parent.
[[nodiscard]] std::vector<u32> rootNodes(const std::vector<ModelNode>& nodes);

// The world matrix of each node, by index.
[[nodiscard]] std::vector<Matrix> worldMatrices(const std::vector<ModelNode>& nodes);

} // namespace vrn::convert

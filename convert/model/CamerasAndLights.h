// Cameras and lights, and the nodes that position them.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Attaches each camera and light to the node that its `worldMatrix` is connected to if it adds no transform of its own,
// otherwise to a new node.
void readCamerasAndLights(ExportContext& context);

// Turns cameras and lights that have a target but no direction towards it. Needs linked parents and local transforms.
void aimAtTargets(ExportContext& context);

} // namespace vrn::convert

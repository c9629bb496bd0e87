// The field of view of cameras in FBX files, which state it in one of several ways.
#pragma once

#include "convert/import/fbx/FbxElement.h"

namespace vrn::convert {

struct FbxView {
    double aspect = 1;    // width divided by height
    double halfWidth = 1; // at the distance 1 from the camera
};

// `camera` is a NodeAttribute. Zeros and the like yield numbers that are not positive and finite.
[[nodiscard]] FbxView viewOf(const FbxElement& camera);

} // namespace vrn::convert

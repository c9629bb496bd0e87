// Assimp's basic types as ours.
#pragma once

#include "convert/shared/Transform.h"

#include <assimp/types.h>
#include <string_view>

namespace vrn::convert {

// The double with the shortest decimal text that is the same float, such as 0.1 for 0.1F.
[[nodiscard]] double shortestDecimal(float number);

[[nodiscard]] Vector vectorOf(const aiVector3D& vector);
[[nodiscard]] Matrix matrixOf(const aiMatrix4x4& matrix);
[[nodiscard]] inline std::string_view viewOf(const aiString& text) { return {text.data, text.length}; }

} // namespace vrn::convert

// Assimp's basic types as ours.
#pragma once

#include "convert/shared/Transform.h"
#include "scene/core/String.h"

#include <assimp/types.h>
#include <string_view>

namespace vrn::convert {

// The double with the shortest decimal text that is the same float, such as 0.1 for 0.1F.
[[nodiscard]] double shortestDecimal(float number);

[[nodiscard]] Vector vectorOf(const aiVector3D& vector);
[[nodiscard]] Matrix matrixOf(const aiMatrix4x4& matrix);
// The name of an object of a file for messages: `material 3` if it has none.
[[nodiscard]] vor::String labelOf(const aiString& name, const char* kind, unsigned index);

[[nodiscard]] inline std::string_view viewOf(const aiString& text) { return {text.data, text.length}; }

} // namespace vrn::convert

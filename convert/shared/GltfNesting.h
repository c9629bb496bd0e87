// How deeply glTF may be nested: the reader refuses more, and the writer reports what the reader would refuse.
#pragma once

#include <cstddef>

namespace vrn::convert {

// Of arrays and objects. Some functions recurse into them, so that more could overflow the stack.
inline constexpr std::size_t maxJsonDepth = 1000;

// Of extras, which are in up to five of these: those of a part are in the file, the meshes, one mesh, its parts and one
// of them.
inline constexpr std::size_t maxExtrasDepth = maxJsonDepth - 5;

// Of nodes. Other programs may recurse into them.
inline constexpr std::size_t maxNodeDepth = 1000;

static_assert(maxJsonDepth == 1000 && maxExtrasDepth == 995 && maxNodeDepth == 1000, "messages contain the numbers");

} // namespace vrn::convert

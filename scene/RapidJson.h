// The JSON library, set up alike for all who include it: lengths of texts have 64 bits. This header
// comes before any of the library's own.
#pragma once

#include <cstddef>

#define RAPIDJSON_NO_SIZETYPEDEFINE
namespace rapidjson {
using SizeType = std::size_t;
}

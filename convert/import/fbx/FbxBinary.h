// Parses binary FBX files.
#pragma once

#include "convert/import/fbx/FbxElement.h"

namespace vrn::convert {

[[nodiscard]] bool isFbxBinary(std::string_view content);

// The sections of a file, with views into `content`. Throws ContentError for `path` if they are damaged.
[[nodiscard]] std::vector<FbxElement> parseFbxBinary(std::string_view content, const std::string& path);

// What precedes the bytes of an array. A value of an array type has at least that many bytes.
struct FbxArrayHeader {
    static constexpr std::size_t size = 12;
    u32 count;
    bool isCompressed;
};
[[nodiscard]] FbxArrayHeader readArrayHeader(std::string_view bytes);

// The bytes of an element of an array type; 0 for other types.
[[nodiscard]] std::size_t elementSize(char type);

} // namespace vrn::convert

// The two containers of glTF: a text file, and GLB, which holds the text and one binary chunk.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// Views into the bytes of a file; `binary` is empty if there is no such chunk.
struct GltfContainer {
    std::string_view json;
    std::string_view binary;
};

// Which container it is, its first bytes tell. Throws ContentError if the lengths of a GLB contradict the file.
[[nodiscard]] GltfContainer openContainer(const std::string& path, std::string_view bytes);

} // namespace vrn::convert

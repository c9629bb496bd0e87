// Paths of textures that lead to the same files from another folder.
//
//     const TexturePaths paths("models/chair.vrn", "out/chair.glb");
//     paths.of("wood.png");       // ../models/wood.png
//
// Those that do not start at the folder of their scene stay as they are.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

class TexturePaths {
public:
    TexturePaths() = default; // changes none
    TexturePaths(const std::string& from, const std::string& to);

    [[nodiscard]] std::string of(std::string_view path) const;

private:
    std::string way_; // from the folder of the new file to that of the old one; empty if they are the same
};

} // namespace vrn::convert

// Rebases relative texture paths from the folder of one file to that of another.
//
//     const TexturePaths paths("models/chair.vrn", "out/chair.glb");
//     paths.rebase("wood.png");       // ../models/wood.png
//
// Absolute paths and URIs are unchanged.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

class TexturePaths {
public:
    TexturePaths() = default; // the identity
    TexturePaths(const std::string& from, const std::string& to);

    [[nodiscard]] std::string rebase(std::string_view path) const;

private:
    std::string prefix_; // from the new folder to the old one; empty if they are the same
};

} // namespace vrn::convert

// Direct access to a glTF file, for what Assimp loses and to protect Assimp from invalid files.
//
// Assimp flips texture coordinates, which is inexact, adds a default material, mixes up nodes of the same name and
// recurses without limit. The file may be invalid: all queries treat what they cannot parse as absent.
#pragma once

#include "convert/shared/SceneNames.h"

#include <memory>
#include <string>
#include <vector>

namespace vrn::convert {

class GltfFile {
public:
    GltfFile(); // for files of other formats: every query returns its default
    explicit GltfFile(const std::string& path);
    ~GltfFile();
    GltfFile(const GltfFile&) = delete;
    GltfFile& operator=(const GltfFile&) = delete;

    // Why Assimp must not read the file: it recurses over nodes and JSON. Empty if it may.
    [[nodiscard]] std::string rejection() const;

    // The file for Assimp: nodes are named by their indices and do not share cameras, lights and skins.
    [[nodiscard]] std::string preparedBytes() const;

    // The losses that cannot be detected in the result of Assimp.
    [[nodiscard]] std::vector<std::string> losses() const;

    // The name in the file of a node in preparedBytes(); other names unchanged.
    [[nodiscard]] std::string originalName(std::string_view name) const;

    // Whether the camera of a node in preparedBytes() has a finite far plane; true if unknown.
    [[nodiscard]] bool hasFarPlane(std::string_view name) const;

    // Whether the index is that of a material in the file.
    [[nodiscard]] bool hasMaterial(u32 index) const;

    // Whether an animation has an interpolation other than linear.
    [[nodiscard]] bool hasNonLinearKeys(u32 animation) const;

    // The v coordinate of each vertex in the file. `primitive` counts the primitives of all meshes. Empty if they are
    // not floats or their number is not `vertices`.
    [[nodiscard]] std::vector<float> textureV(u32 primitive, u32 set, u64 vertices) const;

private:
    struct Contents;
    std::unique_ptr<Contents> contents_;
};

} // namespace vrn::convert

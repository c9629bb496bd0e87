// What a glTF file says that Assimp does not pass on.
//
// It turns texture coordinates upside down when it reads them, which costs digits, and adds a material that the file
// does not have. This looks into the file itself, and for no more than that: whatever it does not understand, it does
// not know.
#pragma once

#include "scene/core/Types.h"

#include <memory>
#include <string>
#include <vector>

namespace vrn::convert {

class GltfFile {
public:
    GltfFile(); // knows nothing
    explicit GltfFile(const std::string& path);
    ~GltfFile();
    GltfFile(const GltfFile&) = delete;
    GltfFile& operator=(const GltfFile&) = delete;

    // Why the file must not be handed on, which recurses over what it holds; empty if nothing speaks against it.
    [[nodiscard]] std::string danger() const;

    // The file as it can be handed on: its nodes have their numbers as names, and share no cameras, lights and skins.
    [[nodiscard]] std::string bytes() const;

    // What is lost of the file, beyond what can be seen in what Assimp makes of it.
    [[nodiscard]] std::vector<std::string> losses() const;

    // The name that the file has for a node which bytes() name so; other names as they are.
    [[nodiscard]] std::string nodeName(std::string_view name) const;

    // Whether the camera of a node which bytes() name so ends somewhere.
    [[nodiscard]] bool hasFarPlane(std::string_view name) const;

    // Whether the file has so many materials that `number` is one.
    [[nodiscard]] bool hasMaterial(vor::u32 number) const;

    // Whether an animation has keys that are not joined linearly.
    [[nodiscard]] bool hasCurves(vor::u32 animation) const;

    // The second texture coordinate of each vertex, `primitive` counting those of all meshes; empty if they are not
    // known, or are not `vertices`.
    [[nodiscard]] std::vector<float> verticals(vor::u32 primitive, vor::u32 set, vor::u64 vertices) const;

private:
    struct Contents;
    std::unique_ptr<Contents> contents_;
};

} // namespace vrn::convert

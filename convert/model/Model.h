// The validated, format-independent form of a scene that the exporters write.
//
// Invariants: every index is valid or `none`, numbers are finite, and anything that the target format cannot
// express has been removed and added to the losses. Unchanged buffers are views into the scene, which must outlive the
// model.
#pragma once

#include "convert/model/TargetFormat.h"
#include "convert/model/Values.h"
#include "convert/shared/Losses.h"
#include "convert/shared/Transform.h"

#include <optional>

namespace vrn::convert {

inline constexpr u32 none = ~u32(0); // the null index

enum class Topology { Points, Lines, Triangles, Polygons };

// Of each face; 1 for polygons, whose faces differ.
[[nodiscard]] constexpr std::size_t cornersPerFace(Topology topology) noexcept {
    return topology == Topology::Triangles ? 3 : topology == Topology::Lines ? 2 : 1;
}

// A mesh. All arrays except those of faces are per vertex; optional ones may be empty.
struct Geometry {
    const Node* source = nullptr;
    Topology topology = Topology::Triangles;
    Values<float> points{};              // x y z
    Values<float> normals{};             // x y z
    Values<float> tangents{};            // x y z and the sign of the bitangent
    Values<float> colors{};              // r g b a
    std::vector<Values<float>> uvsets{}; // u v
    Values<u32> joints{};                // indices of 4 joints of the skin
    Values<float> weights{};             // the weights of these joints
    Values<u32> indices{};               // vertex indices of the corners of all faces
    std::vector<u32> faceCounts{};       // corners per face, for Topology::Polygons
    u32 material = none;

    [[nodiscard]] std::size_t vertices() const noexcept { return points.size() / 3; }
};

struct Texture {
    const Node* source = nullptr;
    std::string file{};
    std::string wrapU{};
    std::string wrapV{};
    i64 filter = 0;                // the OpenGL constant of the minification filter; 0: unspecified
    std::span<const u8> encoded{}; // the bytes of an embedded PNG or JPEG file
};

struct TextureUse {
    u32 texture = none;
    std::array<double, 2> offset = {0, 0};
    std::array<double, 2> scale = {1, 1};
};

struct Material {
    const Node* source = nullptr;
    std::array<double, 4> baseColor = {1, 1, 1, 1};
    double metallic = 0;
    double roughness = 1;
    Vector emission = {0, 0, 0};
    std::string alphaMode{}; // opaque, mask, blend
    double alphaCutoff = 0.5;
    bool isDoubleSided = false;
    TextureUse baseColorMap{};
    TextureUse normalMap{};
    TextureUse metallicRoughnessMap{};
    TextureUse occlusionMap{};
    TextureUse emissionMap{};
};

struct Camera {
    const Node* source = nullptr;
    bool isPerspective = true;
    double fov = 0;                      // vertical, radians
    double aspect = 0;                   // width by height; 0: that of the viewport
    std::array<double, 2> size = {1, 1}; // half width and half height, if orthographic
    double near = 0;
    double far = 0; // 0: infinite
};

struct Light {
    const Node* source = nullptr;
    std::string kind{}; // directional, point, spot
    Vector color = {1, 1, 1};
    double intensity = 1;
    double range = 0;      // 0: infinite
    double innerAngle = 0; // radians from the axis
    double outerAngle = 0;
};

// A node of the hierarchy. Its local transform is `matrix` if set, otherwise `trs`.
struct ModelNode {
    const Node* source = nullptr;
    u32 parent = none;
    std::vector<u32> children{};
    Trs trs{};
    std::optional<Matrix> matrix{};
    u32 geometry = none;
    u32 material = none; // overrides that of the geometry
    u32 skin = none;
    u32 camera = none;
    u32 light = none;

    [[nodiscard]] Matrix local() const { return matrix ? *matrix : toMatrix(trs); }
};

struct Skin {
    const Node* source = nullptr;
    std::vector<u32> joints{};   // nodes
    Values<float> inverseBind{}; // 16 per joint
    u32 skeleton = none;
};

struct Channel {
    u32 target = none;           // a node
    std::string path{};          // translation, rotation, scale
    std::string interpolation{}; // linear, step, cubic
    Values<float> times{};
    Values<float> values{};
};

struct Animation {
    const Node* source = nullptr;
    std::vector<Channel> channels{};
};

struct Model {
    std::vector<Geometry> geometries{};
    std::vector<Material> materials{};
    std::vector<Texture> textures{};
    std::vector<ModelNode> nodes{};
    std::vector<Camera> cameras{};
    std::vector<Light> lights{};
    std::vector<Skin> skins{};
    std::vector<Animation> animations{};
};

} // namespace vrn::convert

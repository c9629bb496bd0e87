// What a scene shows, checked and laid out as other formats have it: the step between a scene and its writers.
//
// Everything that a member refers to by number is there, numbers are finite, and whatever did not fit is among the
// losses already. Buffers are not copied but where they had to be changed, so a model lives no longer than its scene.
#pragma once

#include "convert/model/Values.h"
#include "convert/shared/Losses.h"
#include "convert/shared/Transform.h"

#include <optional>

namespace vrn::convert {

inline constexpr u32 none = ~u32(0); // refers to nothing

enum class Topology { Points, Lines, Triangles, Polygons };

// A mesh: all lists but those of faces are by vertex.
struct Geometry {
    const Node* source = nullptr;
    Topology topology = Topology::Triangles;
    Values<float> points{};              // 3 a vertex
    Values<float> normals{};             // 3, as all others only if there are any
    Values<float> tangents{};            // 4: the last is the sign of the other tangent
    Values<float> colors{};              // 4
    std::vector<Values<float>> uvsets{}; // 2
    Values<u32> joints{};                // 4 joints of the skin ...
    Values<float> weights{};             // ... and how much each counts
    Values<u32> indices{};               // the corners of all faces
    std::vector<u32> faceCounts{};       // how many corners each has, if they are Polygons
    u32 material = none;

    [[nodiscard]] std::size_t vertices() const noexcept { return points.size() / 3; }
};

struct Texture {
    const Node* source = nullptr;
    std::string file{};
    std::string wrapU{};
    std::string wrapV{};
    i64 filter = 0;                // how to shrink it, as the number that graphics interfaces know; 0: any
    std::span<const u8> encoded{}; // the image file itself, a PNG or JPEG, if the scene holds it
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
    double fov = 0;                      // radians from bottom to top
    double aspect = 0;                   // 0: that of the picture
    std::array<double, 2> size = {1, 1}; // from the middle to the right and upper edge, if not a perspective
    double near = 0;
    double far = 0; // 0: no end
};

struct Light {
    const Node* source = nullptr;
    std::string kind{}; // directional, point, spot
    Vector color = {1, 1, 1};
    double intensity = 1;
    double range = 0;      // 0: no end
    double innerAngle = 0; // radians from the middle
    double outerAngle = 0;
};

// A thing at its place. Its local transform is `matrix` if there is one, or else `trs`.
struct Placement {
    const Node* source = nullptr;
    u32 parent = none;
    std::vector<u32> children{};
    Trs trs{};
    std::optional<Matrix> matrix{};
    u32 geometry = none;
    u32 material = none; // instead of that of the geometry
    u32 skin = none;
    u32 camera = none;
    u32 light = none;

    [[nodiscard]] Matrix local() const { return matrix ? *matrix : toMatrix(trs); }
};

struct Skin {
    const Node* source = nullptr;
    std::vector<u32> joints{};   // placements
    Values<float> inverseBind{}; // 16 a joint
    u32 skeleton = none;
};

struct Channel {
    u32 target = none;           // a placement
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
    std::vector<Placement> placements{};
    std::vector<Camera> cameras{};
    std::vector<Light> lights{};
    std::vector<Skin> skins{};
    std::vector<Animation> animations{};
};

// What the format that is written can take.
struct Target {
    bool hasPolygons = false;
    u32 mostCorners = none; // of one polygon
    bool hasLinesAndPoints = false;
    bool hasMaterials = false;
    bool hasScene = false; // nodes in nodes, cameras, lights, skins, animations
    bool hasColors = false;
    bool hasTangents = false;
    std::size_t uvsets = 0;
};

[[nodiscard]] Model modelOf(const Scene& scene, const Target& target, Losses& losses);

} // namespace vrn::convert

// The validated, format-independent form of a scene that the exporters write.
//
// Invariants: every index is valid or `none`, numbers are finite, and anything that the target format cannot
// express has been removed and added to the losses. Unchanged buffers are views into the scene, which must outlive the
// model.
#pragma once

#include "convert/model/TargetFormat.h"
#include "convert/model/Values.h"
#include "convert/shared/Losses.h"
#include "convert/shared/MaterialTable.h"
#include "convert/shared/Transform.h"

#include <optional>

namespace vrn::convert {

inline constexpr u32 none = ~u32(0); // the null index

enum class Topology { Points, Lines, Triangles, Polygons };

// Of each face; 1 for polygons, whose faces differ.
[[nodiscard]] constexpr std::size_t cornersPerFace(Topology topology) noexcept {
    return topology == Topology::Triangles ? 3 : topology == Topology::Lines ? 2 : 1;
}

// Numbers that only the application gives a meaning: an attribute of a mesh or of instances.
struct NamedValues {
    std::string name{}; // starts with an underscore
    u32 components = 1;
    Values<float> values{};
    bool areMatrices = false; // if of four components: the columns of 2 by 2 matrices
};

// Which joints of a skin move a point, and how much: four of each.
struct Influences {
    Values<u32> joints{};
    Values<float> weights{};
};

// A morph target: what is added to the vertices for the weight 1. All arrays are optional.
struct MorphTarget {
    std::string name{};
    Values<float> points{};
    Values<float> normals{};
    Values<float> tangents{}; // x y z
    Values<float> coords{};   // of the first uvset
    Values<float> colors{};   // of the first colours
    u32 colorComponents = 4;
};

// The material of a mesh in one of the variants of the scene.
struct VariantMaterial {
    u32 variant = 0;
    u32 material = none;
};

// A mesh. All arrays except those of faces are per vertex; optional ones may be empty.
struct Geometry {
    const Node* source = nullptr;
    Topology topology = Topology::Triangles;
    Values<float> points{};   // x y z
    Values<float> normals{};  // x y z
    Values<float> tangents{}; // x y z and the sign of the bitangent
    Values<float> colors{};   // r g b a
    std::vector<Values<float>> moreColors{};
    std::vector<Values<float>> uvsets{};  // u v
    std::vector<Influences> influences{}; // more than one if more than four joints move a point
    std::vector<NamedValues> attributes{};
    std::vector<MorphTarget> targets{};
    Values<float> targetWeights{}; // one per target, or none
    std::vector<VariantMaterial> variants{};
    Values<u32> indices{};         // vertex indices of the corners of all faces
    std::vector<u32> faceCounts{}; // corners per face, for Topology::Polygons
    u32 material = none;

    [[nodiscard]] std::size_t vertices() const noexcept { return points.size() / 3; }

    // Calls `act` with each array that has one element per vertex and its components, but for normals and uvsets.
    void forEachVertexArray(auto act) {
        act(points, 3U);
        act(tangents, 4U);
        act(colors, 4U);
        for (Values<float>& values : moreColors)
            act(values, 4U);
        for (Influences& some : influences) {
            act(some.joints, 4U);
            act(some.weights, 4U);
        }
        for (NamedValues& attribute : attributes)
            act(attribute.values, attribute.components);
        for (MorphTarget& target : targets) {
            act(target.points, 3U);
            act(target.normals, 3U);
            act(target.tangents, 3U);
            act(target.coords, 2U);
            act(target.colors, target.colorComponents);
        }
    }
};

// A path, or the bytes of an embedded file.
struct Image {
    std::string file{};
    std::string mimeType{}; // of the file, if its name does not tell it
    std::span<const u8> encoded{};

    [[nodiscard]] bool exists() const noexcept { return !file.empty() || !encoded.empty(); }
};

struct Texture {
    const Node* source = nullptr;
    Image image{};
    Image alternative{}; // the same in a format that fewer programs read
    std::string wrapU{};
    std::string wrapV{};
    i64 filter = 0;    // the OpenGL constant of the minification filter; 0: unspecified
    i64 magFilter = 0; // of the magnification filter
};

struct TextureUse {
    u32 texture = none;
    std::array<double, 2> offset = {0, 0};
    std::array<double, 2> scale = {1, 1};
    double rotation = 0; // radians
    u32 uvset = 0;
    double factor = 1; // of normals, or the strength of occlusion
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
    bool isUnlit = false;
    std::array<std::array<double, 3>, materialNumberCount> numbers{}; // in the order of materialNumbers
    std::array<TextureUse, materialMapCount> maps{};                  // in the order of materialMaps

    [[nodiscard]] TextureUse& map(Map which) { return maps[static_cast<std::size_t>(which)]; }
    [[nodiscard]] const TextureUse& map(Map which) const { return maps[static_cast<std::size_t>(which)]; }
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

// A mesh that is shown several times, each with a transform of its own within that of the node.
struct Instances {
    std::size_t count = 0; // 0: the mesh is shown once
    Values<float> translations{};
    Values<float> rotations{};
    Values<float> scales{};
    std::vector<NamedValues> attributes{};
};

// A node of the hierarchy. Its local transform is `matrix` if set, otherwise `trs`.
struct ModelNode {
    const Node* source = nullptr;
    u32 parent = none;
    std::vector<u32> children{};
    Trs trs{};
    std::optional<Matrix> matrix{};
    u32 geometry = none;
    std::vector<u32> parts{}; // further geometries
    u32 material = none;      // overrides those of the geometries
    Instances instances{};
    Values<float> targetWeights{}; // override those of the geometry
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
    std::string path{};          // translation, rotation, scale, weights
    std::string interpolation{}; // linear, step, cubic
    Values<float> times{};
    Values<float> values{};
};

struct Animation {
    const Node* source = nullptr;
    std::vector<Channel> channels{};
};

// One of several scenes that a file holds.
struct SceneNodes {
    const Node* source = nullptr;
    std::vector<u32> roots{};
    bool isDefault = false;
};

struct Model {
    const Node* asset = nullptr;         // says what holds for the whole file
    std::vector<SceneNodes> scenes{};    // none: one scene of all roots
    std::vector<std::string> variants{}; // names
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

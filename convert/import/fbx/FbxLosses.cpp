#include "convert/import/fbx/FbxLosses.h"

#include <algorithm>
#include <initializer_list>
#include <unordered_set>
#include <vector>

namespace vrn::convert {

namespace {

using Names = std::initializer_list<std::string_view>;

bool isIn(const Names& names, std::string_view name) { return std::ranges::find(names, name) != names.end(); }

String labelOf(const FbxElement& object) { return String(std::string_view(nameOf(object))); }

// Morph targets have a loss of their own. The pose of skins is in their clusters, too.
bool isRead(std::string_view type, std::string_view kind) {
    if (type == "Geometry")
        return isIn({"Mesh", "Shape"}, kind);
    if (type == "NodeAttribute")
        return isIn({"Camera", "Light", "LimbNode", "Limb", "Null", "Root", "Mesh"}, kind);
    if (type == "Deformer")
        return isIn({"Skin", "Cluster", "BlendShape", "BlendShapeChannel"}, kind);
    return isIn({"Model", "Material", "Texture", "LayeredTexture", "Video", "AnimationStack", "AnimationLayer",
                 "AnimationCurveNode", "AnimationCurve", "Pose", "SceneInfo", "GlobalSettings"},
                type);
}

// The names under which materials have the textures that Assimp takes.
bool isReadMap(std::string_view property) {
    return isIn({"DiffuseColor",
                 "AmbientColor",
                 "EmissiveColor",
                 "EmissiveFactor",
                 "SpecularColor",
                 "SpecularFactor",
                 "ShininessExponent",
                 "TransparentColor",
                 "TransparencyFactor",
                 "ReflectionColor",
                 "ReflectionFactor",
                 "DisplacementColor",
                 "NormalMap",
                 "Bump",
                 "Maya|DiffuseTexture",
                 "Maya|NormalTexture",
                 "Maya|SpecularTexture",
                 "Maya|FalloffTexture",
                 "Maya|ReflectionMapTexture",
                 "Maya|baseColor",
                 "Maya|normalCamera",
                 "Maya|emissionColor",
                 "Maya|metalness",
                 "Maya|diffuseRoughness",
                 "Maya|TEX_color_map",
                 "Maya|TEX_normal_map",
                 "Maya|TEX_emissive_map",
                 "Maya|TEX_metallic_map",
                 "Maya|TEX_roughness_map",
                 "Maya|TEX_ao_map",
                 "3dsMax|Parameters|base_color_map",
                 "3dsMax|Parameters|bump_map",
                 "3dsMax|Parameters|emission_map",
                 "3dsMax|Parameters|metalness_map",
                 "3dsMax|Parameters|roughness_map",
                 "3dsMax|main|base_color_map",
                 "3dsMax|main|norm_map",
                 "3dsMax|main|emit_color_map",
                 "3dsMax|main|ao_map",
                 "3dsMax|main|metalness_map",
                 "3dsMax|main|roughness_map",
                 "3dsMax|main|glossiness_map",
                 "3dsMax|main|specular_map",
                 "3dsMax|main|opacity_map"},
                property);
}

class Report {
public:
    Report(const FbxScene& scene, Losses& losses) : scene_(scene), losses_(losses) {}

    void object(const FbxElement& object) {
        const std::string_view kind = object.value(2).text();
        if (!isRead(object.name, kind))
            losses_.add("objects of type " + std::string(object.name) + (kind.empty() ? "" : " ") + std::string(kind),
                        labelOf(object));
        else if (object.name == "Geometry" && kind == "Mesh")
            mesh(object);
        else if (object.name == "Material")
            material(object);
        else if (object.name == "NodeAttribute" && kind == "Camera")
            camera(object);
    }

    void modelsOutsideOfTheScene() {
        std::unordered_set<i64> reached;
        std::vector<i64> pending = {FbxScene::rootId};
        while (!pending.empty()) {
            const i64 parent = pending.back();
            pending.pop_back();
            for (const FbxModel* child : scene_.children(parent))
                if (reached.insert(child->id).second)
                    pending.push_back(child->id);
        }
        for (const FbxElement* object : scene_.objects("Model"))
            if (const FbxModel* model = scene_.model(object->value(0).integer()); model && !reached.contains(model->id))
                losses_.add("models outside of the scene", labelOf(*object));
    }

private:
    void mesh(const FbxElement& geometry) {
        constexpr i64 smooth = 2; // less shows the control mesh
        const FbxElement* smoothness = geometry.child("Smoothness");
        if (smoothness && smoothness->value(0).integer() >= smooth)
            losses_.add("subdivision of meshes", labelOf(geometry));
        for (const FbxElement& layer : geometry.children)
            if (layer.name.starts_with("LayerElement") && !isReadLayer(layer.name, geometry))
                losses_.add(std::string(layer.name) + " of meshes", labelOf(geometry));
    }

    // Normals say what smoothing groups are for.
    static bool isReadLayer(std::string_view layer, const FbxElement& geometry) {
        if (layer == "LayerElementSmoothing")
            return geometry.child("LayerElementNormal") != nullptr;
        return isIn({"LayerElementNormal", "LayerElementTangent", "LayerElementBinormal", "LayerElementUV",
                     "LayerElementColor", "LayerElementMaterial"},
                    layer);
    }

    // How large the view is depends on the program that wrote the file.
    void camera(const FbxElement& camera) {
        constexpr double perspective = 0;
        constexpr double orthographic = 1;
        if (numberOf(camera, "CameraProjectionType", perspective) == orthographic)
            losses_.add("orthographic projections of cameras (read as perspective ones)", labelOf(camera));
    }

    void material(const FbxElement& material) {
        for (const FbxConnection& connection : scene_.connectionsTo(material.value(0).integer())) {
            const FbxElement* texture = scene_.object(connection.source);
            if (texture && isIn({"Texture", "LayeredTexture"}, texture->name) && !isReadMap(connection.property))
                losses_.add("textures of other properties of materials",
                            String(nameOf(material) + ' ' + std::string(connection.property)));
        }
        if (const FbxElement* list = material.child("Properties70"))
            for (const FbxElement& property : list->children)
                if (const std::string_view name = property.value(0).text(); name.find('|') != std::string_view::npos)
                    losses_.add("properties of materials that only one program has",
                                String(nameOf(material) + ' ' + std::string(name)));
    }

    const FbxScene& scene_;
    Losses& losses_;
};

} // namespace

void reportUnread(const FbxScene& scene, Losses& losses) {
    Report report(scene, losses);
    for (const FbxElement* object : scene.objects())
        report.object(*object);
    report.modelsOutsideOfTheScene();
}

} // namespace vrn::convert

#include "convert/import/ImportContext.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrn::convert {

namespace {

constexpr double degrees = 180 / std::numbers::pi;

// Scaling, turning and moving are said apart where that loses nothing, and where they are animated one by one.
void setTransform(ImportContext& import, Node& node, const aiNode& from) {
    const Matrix matrix = matrixOf(from.mTransformation);
    const Trs trs = decompose(matrix);
    const Matrix again = toMatrix(trs);
    const bool isAnimated = import.animated.contains(std::string(textOf(from.mName)));
    if (again != matrix && !isAnimated)
        return setNumbers(node, "transform", AttrType::Mat4, matrix);
    if (difference(again, matrix) > 1e-5)
        import.losses.add("shear of animated nodes", node);
    const Trs initial;
    if (isAnimated || trs.translation != initial.translation)
        setNumbers(node, "translation", AttrType::Vec3, trs.translation);
    if (isAnimated || trs.rotation != initial.rotation)
        setNumbers(node, "rotation", AttrType::Quat, trs.rotation);
    if (isAnimated || trs.scale != initial.scale)
        setNumbers(node, "scale", AttrType::Vec3, trs.scale);
}

void setGeometry(ImportContext& import, Node& node, unsigned mesh) {
    const auto known = import.meshes.find(mesh);
    if (known != import.meshes.end() && known->second)
        refer(node, "geometry", *known->second);
}

constexpr const char* lightRange = "PBR_LightRange"; // stands at the node of a light

// Whether a node has more than what its light is read from.
bool hasMetadata(const aiNode& node) {
    if (!node.mMetaData)
        return false;
    unsigned known = node.mMetaData->HasKey(lightRange) ? 1 : 0;
    aiMetadata extensions;
    if (node.mMetaData->Get("extensions", extensions) && extensions.mNumProperties == 1 &&
        extensions.HasKey("KHR_lights_punctual"))
        ++known;
    return node.mMetaData->mNumProperties > known;
}

// A node shows one mesh; of several, each but the first is a child.
Node& addNode(ImportContext& import, const aiNode& from, Node* parent) {
    Node& node = import.create(from.mNumMeshes == 0 ? "transform" : "instance",
                               import.gltf.nodeName(textOf(from.mName)), "node");
    if (parent)
        refer(node, "parent", *parent);
    setTransform(import, node, from);
    if (from.mNumMeshes != 0)
        setGeometry(import, node, from.mMeshes[0]);
    const std::string more = std::string(node.name().view()) + "_more";
    for (unsigned i = 1; i < from.mNumMeshes; ++i) {
        Node& child = import.create("instance", "", more.c_str());
        refer(child, "parent", node);
        setGeometry(import, child, from.mMeshes[i]);
    }
    if (hasMetadata(from))
        import.losses.add("metadata of nodes", node);
    return node;
}

// Places a camera or light at the node of its name.
void setPlace(ImportContext& import, Node& node, const aiString& name, const aiVector3D& position) {
    if (Node* place = import.nodeOf(name))
        connect(node, "worldMatrix", *place, "outMatrix");
    if (position != aiVector3D())
        setNumbers(node, "position", AttrType::Pos3, Vector{plain(position.x), plain(position.y), plain(position.z)});
}

Vector vectorOf(const aiVector3D& v) { return {plain(v.x), plain(v.y), plain(v.z)}; }

void setLens(Node& node, const aiCamera& camera) {
    const double aspect = camera.mAspect > 0 ? plain(camera.mAspect) : 1;
    if (camera.mOrthographicWidth > 0) {
        const double width = plain(camera.mOrthographicWidth);
        setText(node, "projection", "orthographic");
        setNumbers(node, "size", AttrType::Vec2, std::array{width, width / aspect});
    } else {
        const double across = plain(camera.mHorizontalFOV);
        setText(node, "projection", "perspective");
        set(node, "fov", AttrData::real(2 * std::atan(std::tan(across / 2) / aspect) * degrees));
        if (camera.mAspect > 0)
            set(node, "aspect", AttrData::real(aspect));
    }
    set(node, "near", AttrData::real(plain(camera.mClipPlaneNear)));
}

const char* kindOf(const aiLight& light) {
    switch (light.mType) {
    case aiLightSource_DIRECTIONAL:
        return "directional";
    case aiLightSource_POINT:
        return "point";
    case aiLightSource_SPOT:
        return "spot";
    default:
        return nullptr;
    }
}

void setColor(Node& node, const aiColor3D& color) {
    const double most = plain(std::max({color.r, color.g, color.b}));
    const double intensity = most > 1 ? most : 1;
    setNumbers(node, "color", AttrType::Rgba,
               std::array{plain(color.r) / intensity, plain(color.g) / intensity, plain(color.b) / intensity, 1.0});
    set(node, "intensity", AttrData::real(intensity));
}

} // namespace

void importNodes(ImportContext& import) {
    struct Open {
        const aiNode* from;
        Node* parent;
    };
    std::vector<Open> open;
    if (import.from.mRootNode)
        open.push_back({import.from.mRootNode, nullptr});
    while (!open.empty()) {
        const auto [from, parent] = open.back();
        open.pop_back();
        Node& node = addNode(import, *from, parent);
        import.places.emplace(textOf(from->mName), ImportContext::Place{&node, from});
        for (unsigned i = from->mNumChildren; i > 0; --i)
            open.push_back({from->mChildren[i - 1], &node});
    }
    importSkins(import);
    std::unordered_map<const Node*, Node*> skins; // by the mesh that they move
    for (const auto& [number, skin] : import.skins)
        skins.emplace(import.meshes[number], skin);
    for (Node& node : import.scene.nodes()) {
        const Input* geometry = node.input("geometry");
        const auto skin = geometry ? skins.find(geometry->nodeValue()) : skins.end();
        if (skin != skins.end())
            refer(node, "skin", *skin->second);
    }
}

void importCameras(ImportContext& import) {
    for (const aiCamera* camera : std::span(import.from.mCameras, import.from.mNumCameras)) {
        Node& node = import.create("camera", import.gltf.nodeName(textOf(camera->mName)), "camera");
        setLens(node, *camera);
        if (import.gltf.hasFarPlane(textOf(camera->mName)))
            set(node, "far", AttrData::real(plain(camera->mClipPlaneFar)));
        // For glTF, that is the place of the node once more.
        const aiVector3D position = import.isGltf ? aiVector3D() : camera->mPosition;
        setPlace(import, node, camera->mName, position);
        if (camera->mLookAt != aiVector3D(0, 0, -1) && camera->mLookAt != aiVector3D()) {
            const aiVector3D at = position + camera->mLookAt;
            setNumbers(node, "lookAt", AttrType::Pos3, vectorOf(at));
        }
        if (camera->mUp != aiVector3D(0, 1, 0))
            setNumbers(node, "up", AttrType::Vec3, vectorOf(camera->mUp));
    }
}

void importLights(ImportContext& import) {
    for (const aiLight* light : std::span(import.from.mLights, import.from.mNumLights)) {
        const char* kind = kindOf(*light);
        if (!kind) {
            import.losses.add("lights that are neither directional nor points nor spots", String(textOf(light->mName)));
            continue;
        }
        Node& node = import.create("light", import.gltf.nodeName(textOf(light->mName)), "light");
        setText(node, "kind", kind);
        setColor(node, light->mColorDiffuse);
        if (light->mDirection != aiVector3D() && light->mDirection != aiVector3D(0, 0, -1))
            setNumbers(node, "direction", AttrType::Vec3, vectorOf(light->mDirection));
        if (light->mType == aiLightSource_SPOT) {
            set(node, "innerAngle", AttrData::real(plain(light->mAngleInnerCone) * degrees));
            set(node, "outerAngle", AttrData::real(plain(light->mAngleOuterCone) * degrees));
        }
        const auto place = import.places.find(std::string(textOf(light->mName)));
        const aiMetadata* about = place != import.places.end() ? place->second.from->mMetaData : nullptr;
        if (float range = 0; about && about->Get(lightRange, range) && range > 0)
            set(node, "range", AttrData::real(plain(range)));
        setPlace(import, node, light->mName, light->mPosition);
    }
}

} // namespace vrn::convert

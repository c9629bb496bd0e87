#include "convert/import/assimp/ImportCamerasAndLights.h"

#include "convert/import/assimp/AssimpValues.h"
#include "convert/shared/NodeInputs.h"
#include "convert/shared/Transform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace vrn::convert {

namespace {

// Cameras and lights are positioned by the node of the same name.
void setPosition(ImportContext& context, Node& node, const aiString& name, const aiVector3D& position) {
    if (Node* host = context.nodeOf(name))
        connect(node, "worldMatrix", *host, "outMatrix");
    if (position != aiVector3D())
        setNumbers(node, "position", AttrType::Pos3, vectorOf(position));
}

void setProjection(Node& node, const aiCamera& camera) {
    const double aspect = camera.mAspect > 0 ? shortestDecimal(camera.mAspect) : 1;
    if (camera.mOrthographicWidth > 0) {
        const double width = shortestDecimal(camera.mOrthographicWidth);
        setText(node, "projection", "orthographic");
        setNumbers(node, "size", AttrType::Vec2, std::array{width, width / aspect});
    } else {
        const double horizontalFov = shortestDecimal(camera.mHorizontalFOV);
        setText(node, "projection", "perspective");
        set(node, "fov", AttrData::real(2 * std::atan(std::tan(horizontalFov / 2) / aspect) * degreesPerRadian));
        if (camera.mAspect > 0)
            set(node, "aspect", AttrData::real(aspect));
    }
    set(node, "near", AttrData::real(shortestDecimal(camera.mClipPlaneNear)));
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
    const double brightest = shortestDecimal(std::max({color.r, color.g, color.b}));
    const double intensity = brightest > 1 ? brightest : 1;
    setNumbers(node, "color", AttrType::Rgba,
               std::array{shortestDecimal(color.r) / intensity, shortestDecimal(color.g) / intensity,
                          shortestDecimal(color.b) / intensity, 1.0});
    set(node, "intensity", AttrData::real(intensity));
}

} // namespace

void importCameras(ImportContext& context) {
    for (const aiCamera* camera : std::span(context.from.mCameras, context.from.mNumCameras)) {
        Node& node = context.create("camera", viewOf(camera->mName), "camera");
        setProjection(node, *camera);
        set(node, "far", AttrData::real(shortestDecimal(camera->mClipPlaneFar)));
        setPosition(context, node, camera->mName, camera->mPosition);
        if (camera->mLookAt != aiVector3D(0, 0, -1) && camera->mLookAt != aiVector3D()) {
            setNumbers(node, "lookAt", AttrType::Pos3, vectorOf(camera->mPosition + camera->mLookAt));
        }
        if (camera->mUp != aiVector3D(0, 1, 0))
            setNumbers(node, "up", AttrType::Vec3, vectorOf(camera->mUp));
    }
}

void importLights(ImportContext& context) {
    for (unsigned i = 0; i < context.from.mNumLights; ++i) {
        const aiLight* light = context.from.mLights[i];
        const char* kind = kindOf(*light);
        if (!kind) {
            context.losses.add("lights that are not directional, point or spot", labelOf(light->mName, "light", i));
            continue;
        }
        Node& node = context.create("light", viewOf(light->mName), "light");
        setText(node, "kind", kind);
        setColor(node, light->mColorDiffuse);
        if (light->mDirection != aiVector3D() && light->mDirection != aiVector3D(0, 0, -1))
            setNumbers(node, "direction", AttrType::Vec3, vectorOf(light->mDirection));
        if (light->mType == aiLightSource_SPOT) {
            set(node, "innerAngle", AttrData::real(shortestDecimal(light->mAngleInnerCone) * degreesPerRadian));
            set(node, "outerAngle", AttrData::real(shortestDecimal(light->mAngleOuterCone) * degreesPerRadian));
        }
        setPosition(context, node, light->mName, light->mPosition);
    }
}

} // namespace vrn::convert

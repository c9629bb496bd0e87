#include "convert/export/GltfSceneWriter.h"

#include "convert/export/GltfObjects.h"
#include "convert/model/Inputs.h"
#include "convert/model/NodeHierarchy.h"
#include "convert/shared/GltfNesting.h"

#include <algorithm>

namespace vrn::convert {

namespace {

constexpr const char* lightExtension = "KHR_lights_punctual";
constexpr const char* variantsExtension = "KHR_materials_variants";

// In one element of an accessor with the values of a channel.
u32 componentsOf(const std::string& path) { return path == "rotation" ? 4 : path == "weights" ? 1 : 3; }

} // namespace

void GltfSceneWriter::writeNodes() {
    if (model_.scenes.empty()) {
        json_.key("scene").integer(0);
        json_.key("scenes").array([&] { json_.object([&] { writeRoots(rootNodes(model_.nodes)); }); });
    } else {
        writeScenes();
    }
    writeArray(json_, "nodes", model_.nodes, [&](const ModelNode& node) { writeNode(node); });
    reportDeepNodes();
}

void GltfSceneWriter::writeRoots(const std::vector<u32>& roots) {
    if (!roots.empty())
        json_.key("nodes").integers(roots);
}

void GltfSceneWriter::writeScenes() {
    const auto first = std::ranges::find(model_.scenes, true, &SceneNodes::isDefault);
    if (first != model_.scenes.end())
        json_.key("scene").integer(static_cast<u64>(first - model_.scenes.begin()));
    writeArray(json_, "scenes", model_.scenes, [&](const SceneNodes& scene) {
        if (const Input* name = scene.source->input("name"))
            json_.key("name").text(name->value().asString());
        writeRoots(scene.roots);
        writeExtras(json_, *scene.source, "extras", losses_);
    });
}

// Traverses level by level: recursion could overflow the stack.
void GltfSceneWriter::reportDeepNodes() {
    std::vector<u32> level = rootNodes(model_.nodes);
    for (std::size_t depth = 0; depth <= maxNodeDepth; ++depth) {
        std::vector<u32> next;
        for (const u32 index : level)
            next.insert(next.end(), model_.nodes[index].children.begin(), model_.nodes[index].children.end());
        level = std::move(next);
    }
    for (const u32 index : level)
        losses_.add("nodes nested more than 1000 levels deep (written, but rejected by many readers)",
                    *model_.nodes[index].source);
}

void GltfSceneWriter::writeNode(const ModelNode& node) {
    writeName(json_, *node.source);
    if (!node.children.empty())
        json_.key("children").integers(node.children);
    writeTransform(node);
    if (node.geometry != none) {
        json_.key("mesh").integer(meshes_.meshIndex(node));
        if (meshes_.hasSkin(node))
            json_.key("skin").integer(node.skin);
    }
    if (!node.targetWeights.empty())
        json_.key("weights").numbers(node.targetWeights.span());
    if (node.camera != none)
        json_.key("camera").integer(node.camera);
    if (node.light != none || node.instances.count != 0)
        json_.key("extensions").object([&] { writeNodeExtensions(node); });
    writeExtras(json_, *node.source, "extras", losses_);
}

void GltfSceneWriter::writeNodeExtensions(const ModelNode& node) {
    if (node.light != none) {
        extensions_.use(lightExtension);
        json_.key(lightExtension).object([&] { json_.key("light").integer(node.light); });
    }
    if (node.instances.count == 0)
        return;
    constexpr const char* instancing = "EXT_mesh_gpu_instancing";
    extensions_.use(instancing);
    const auto add = [&](const char* name, const Values<float>& values, u32 components) {
        if (!values.empty())
            json_.key(name).integer(buffer_.addFloats(values.span(), components, GltfBuffer::Use::Other));
    };
    json_.key(instancing).object([&] {
        json_.key("attributes").object([&] {
            add("TRANSLATION", node.instances.translations, 3);
            add("ROTATION", node.instances.rotations, 4);
            add("SCALE", node.instances.scales, 3);
            for (const NamedValues& attribute : node.instances.attributes)
                json_.key(attribute.name).integer(buffer_.addAttribute(attribute, GltfBuffer::Use::Other));
        });
    });
}

void GltfSceneWriter::writeTransform(const ModelNode& node) {
    if (node.matrix) {
        json_.key("matrix").reals(*node.matrix);
        return;
    }
    const Trs initial;
    if (node.trs.translation != initial.translation)
        json_.key("translation").reals(node.trs.translation);
    if (node.trs.rotation != initial.rotation)
        json_.key("rotation").reals(node.trs.rotation);
    if (node.trs.scale != initial.scale)
        json_.key("scale").reals(node.trs.scale);
}

void GltfSceneWriter::writeCameras() {
    writeArray(json_, "cameras", model_.cameras, [&](const Camera& camera) {
        writeName(json_, *camera.source);
        json_.key("type").text(camera.isPerspective ? "perspective" : "orthographic");
        json_.key(camera.isPerspective ? "perspective" : "orthographic").object([&] {
            if (camera.isPerspective) {
                json_.key("yfov").real(camera.fov);
                if (camera.aspect > 0)
                    json_.key("aspectRatio").real(camera.aspect);
            } else {
                json_.key("xmag").real(camera.size[0]);
                json_.key("ymag").real(camera.size[1]);
            }
            json_.key("znear").real(camera.near);
            if (camera.far > 0)
                json_.key("zfar").real(camera.far);
        });
        writeExtras(json_, *camera.source, "extras", losses_);
    });
}

void GltfSceneWriter::writeSkins() {
    writeArray(json_, "skins", model_.skins, [&](const Skin& skin) {
        writeName(json_, *skin.source);
        json_.key("joints").integers(skin.joints);
        if (!skin.inverseBind.empty())
            json_.key("inverseBindMatrices")
                .integer(buffer_.addFloats(skin.inverseBind.span(), 16, GltfBuffer::Use::Other));
        if (skin.skeleton != none)
            json_.key("skeleton").integer(skin.skeleton);
        writeExtras(json_, *skin.source, "extras", losses_);
    });
}

void GltfSceneWriter::writeAnimations() {
    using enum GltfBuffer::Use;
    writeArray(json_, "animations", model_.animations, [&](const Animation& animation) {
        writeName(json_, *animation.source);
        u32 sampler = 0;
        writeArray(json_, "channels", animation.channels, [&](const Channel& channel) {
            json_.key("sampler").integer(sampler++);
            json_.key("target").object([&] {
                json_.key("node").integer(channel.target);
                json_.key("path").text(channel.path);
            });
        });
        writeArray(json_, "samplers", animation.channels, [&](const Channel& channel) {
            json_.key("input").integer(buffer_.addFloats(channel.times.span(), 1, Other, true));
            json_.key("output").integer(buffer_.addFloats(channel.values.span(), componentsOf(channel.path), Other));
            json_.key("interpolation")
                .text(channel.interpolation == "step"    ? "STEP"
                      : channel.interpolation == "cubic" ? "CUBICSPLINE"
                                                         : "LINEAR");
        });
        writeExtras(json_, *animation.source, "extras", losses_);
    });
}

void GltfSceneWriter::writeLight(const Light& light) {
    writeName(json_, *light.source);
    json_.key("type").text(light.kind);
    json_.key("color").reals(light.color);
    json_.key("intensity").real(light.intensity);
    if (light.range > 0 && light.kind == "directional")
        losses_.add("ranges of directional lights", *light.source);
    else if (light.range > 0)
        json_.key("range").real(light.range);
    if (light.kind == "spot")
        json_.key("spot").object([&] {
            json_.key("innerConeAngle").real(light.innerAngle);
            json_.key("outerConeAngle").real(light.outerAngle);
        });
    writeExtras(json_, *light.source, "extras", losses_);
}

void GltfSceneWriter::writeExtensions() {
    if (!model_.variants.empty())
        extensions_.use(variantsExtension);
    extensions_.writeJson(json_);
    if (model_.lights.empty() && model_.variants.empty())
        return;
    json_.key("extensions").object([&] {
        if (!model_.lights.empty())
            json_.key(lightExtension).object([&] {
                writeArray(json_, "lights", model_.lights, [&](const Light& light) { writeLight(light); });
            });
        if (!model_.variants.empty())
            json_.key(variantsExtension).object([&] {
                writeArray(json_, "variants", model_.variants,
                           [&](const std::string& name) { json_.key("name").text(name); });
            });
    });
}

} // namespace vrn::convert

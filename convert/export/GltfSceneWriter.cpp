#include "convert/export/GltfSceneWriter.h"

#include "convert/model/Inputs.h"
#include "convert/model/NodeHierarchy.h"
#include "convert/shared/ImageKind.h"
#include "convert/shared/Uri.h"

#include <map>

namespace vrn::convert {

void GltfSceneWriter::writeNodes() {
    json_.key("scene").integer(0);
    json_.key("scenes").array([&] {
        json_.object([&] {
            const std::vector<u32> roots = rootNodes(model_.nodes);
            if (!roots.empty())
                json_.key("nodes").integers(roots);
        });
    });
    writeArray("nodes", model_.nodes, [&](const ModelNode& node) { writeNode(node); });
    reportDeepNodes();
}

// Traverses level by level: recursion could overflow the stack.
void GltfSceneWriter::reportDeepNodes() {
    constexpr std::size_t maxDepth = 1000;
    std::vector<u32> level = rootNodes(model_.nodes);
    for (std::size_t depth = 0; depth <= maxDepth; ++depth) {
        std::vector<u32> next;
        for (const u32 index : level)
            next.insert(next.end(), model_.nodes[index].children.begin(), model_.nodes[index].children.end());
        level = std::move(next);
    }
    for (const u32 index : level)
        losses_.add("nodes nested more than 1000 levels deep (written, but rejected by many readers)",
                    *model_.nodes[index].source);
}

// Some readers identify nodes by their names.
std::string GltfSceneWriter::uniqueName(const ModelNode& node) {
    const String wanted = displayName(*node.source);
    std::string name = names_.make(std::string(wanted.view()));
    if (name != wanted.view())
        losses_.add("names shared by several nodes (numbered)", *node.source);
    return name;
}

void GltfSceneWriter::writeNode(const ModelNode& node) {
    json_.key("name").text(uniqueName(node));
    if (!node.children.empty())
        json_.key("children").integers(node.children);
    writeTransform(node);
    if (node.geometry != none) {
        json_.key("mesh").integer(meshes_.meshIndex(node));
        if (meshes_.hasSkin(node))
            json_.key("skin").integer(node.skin);
    }
    if (node.camera != none)
        json_.key("camera").integer(node.camera);
    if (node.light != none)
        json_.key("extensions").object([&] {
            json_.key("KHR_lights_punctual").object([&] { json_.key("light").integer(node.light); });
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

void GltfSceneWriter::writeMaterials() {
    writeArray("materials", meshes_.materials(), [&](const GltfMeshes::MaterialVariant& variant) {
        writeMaterial(model_.materials[variant.material], variant.hasTextures);
    });
}

void GltfSceneWriter::writeMaterial(const Material& material, bool hasTextures) {
    const auto texture = [&](const char* name, const TextureUse& use) {
        if (hasTextures && use.texture != none)
            writeTexture(name, use);
    };
    json_.key("name").text(displayName(*material.source));
    json_.key("pbrMetallicRoughness").object([&] {
        json_.key("baseColorFactor").reals(material.baseColor);
        json_.key("metallicFactor").real(material.metallic);
        json_.key("roughnessFactor").real(material.roughness);
        texture("baseColorTexture", material.baseColorMap);
        texture("metallicRoughnessTexture", material.metallicRoughnessMap);
    });
    texture("normalTexture", material.normalMap);
    texture("occlusionTexture", material.occlusionMap);
    texture("emissiveTexture", material.emissionMap);
    json_.key("emissiveFactor").reals(material.emission);
    json_.key("alphaMode")
        .text(material.alphaMode == "mask"    ? "MASK"
              : material.alphaMode == "blend" ? "BLEND"
                                              : "OPAQUE");
    if (material.alphaMode == "mask")
        json_.key("alphaCutoff").real(material.alphaCutoff);
    json_.key("doubleSided").boolean(material.isDoubleSided);
}

void GltfSceneWriter::writeTexture(const char* name, const TextureUse& use) {
    const TextureUse initial;
    const bool hasTransform = use.offset != initial.offset || use.scale != initial.scale;
    hasTextureTransforms_ |= hasTransform;
    json_.key(name).object([&] {
        json_.key("index").integer(use.texture);
        if (hasTransform)
            json_.key("extensions").object([&] {
                json_.key("KHR_texture_transform").object([&] {
                    json_.key("offset").reals(use.offset);
                    json_.key("scale").reals(use.scale);
                });
            });
    });
}

GltfSceneWriter::Sampler GltfSceneWriter::samplerOf(const Texture& texture) {
    const auto wrapMode = [&](const std::string& name) -> u32 {
        if (name == "clamp")
            return 33071;
        if (name == "mirror")
            return 33648;
        if (!name.empty() && name != "repeat")
            losses_.add("unknown texture wrap modes", *texture.source);
        return 10497;
    };
    const i64 filter = texture.filter;
    const bool isKnown = filter == 9728 || filter == 9729 || (filter >= 9984 && filter <= 9987);
    if (filter != 0 && !isKnown)
        losses_.add("unknown texture filters", *texture.source);
    return {wrapMode(texture.wrapU), wrapMode(texture.wrapV), isKnown ? static_cast<u32>(filter) : 0};
}

void GltfSceneWriter::writeTextures() {
    std::map<Sampler, u32> indices;
    std::vector<Sampler> samplers;
    std::vector<u32> used;
    for (const Texture& texture : model_.textures) {
        const auto [found, isNew] = indices.emplace(samplerOf(texture), static_cast<u32>(samplers.size()));
        if (isNew)
            samplers.push_back(found->first);
        used.push_back(found->second);
    }
    writeArray("samplers", samplers, [&](const Sampler& sampler) {
        json_.key("wrapS").integer(sampler.wrapS);
        json_.key("wrapT").integer(sampler.wrapT);
        if (sampler.filter != 0)
            json_.key("minFilter").integer(sampler.filter);
    });
    u32 image = 0;
    writeArray("textures", used, [&](u32 sampler) {
        json_.key("sampler").integer(sampler);
        json_.key("source").integer(image++);
    });
    writeArray("images", model_.textures, [&](const Texture& texture) {
        json_.key("name").text(displayName(*texture.source));
        if (texture.encoded.empty()) {
            json_.key("uri").text(uriOf(texture.file));
            return;
        }
        json_.key("bufferView").integer(buffer_.addBytes(std::as_bytes(texture.encoded)));
        json_.key("mimeType").text(isPng(texture.encoded) ? "image/png" : "image/jpeg");
    });
}

void GltfSceneWriter::writeCameras() {
    writeArray("cameras", model_.cameras, [&](const Camera& camera) {
        json_.key("name").text(displayName(*camera.source));
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
    });
}

void GltfSceneWriter::writeSkins() {
    writeArray("skins", model_.skins, [&](const Skin& skin) {
        json_.key("name").text(displayName(*skin.source));
        json_.key("joints").integers(skin.joints);
        if (!skin.inverseBind.empty())
            json_.key("inverseBindMatrices")
                .integer(buffer_.addFloats(skin.inverseBind.span(), 16, GltfBuffer::Use::Other));
        if (skin.skeleton != none)
            json_.key("skeleton").integer(skin.skeleton);
    });
}

void GltfSceneWriter::writeAnimations() {
    using enum GltfBuffer::Use;
    writeArray("animations", model_.animations, [&](const Animation& animation) {
        json_.key("name").text(displayName(*animation.source));
        u32 sampler = 0;
        writeArray("channels", animation.channels, [&](const Channel& channel) {
            json_.key("sampler").integer(sampler++);
            json_.key("target").object([&] {
                json_.key("node").integer(channel.target);
                json_.key("path").text(channel.path);
            });
        });
        writeArray("samplers", animation.channels, [&](const Channel& channel) {
            json_.key("input").integer(buffer_.addFloats(channel.times.span(), 1, Other, true));
            json_.key("output").integer(
                buffer_.addFloats(channel.values.span(), channel.path == "rotation" ? 4 : 3, Other));
            json_.key("interpolation")
                .text(channel.interpolation == "step"    ? "STEP"
                      : channel.interpolation == "cubic" ? "CUBICSPLINE"
                                                         : "LINEAR");
        });
    });
}

void GltfSceneWriter::writeLight(const Light& light) {
    json_.key("name").text(displayName(*light.source));
    json_.key("type").text(light.kind);
    json_.key("color").reals(light.color);
    json_.key("intensity").real(light.intensity);
    if (light.range > 0 && light.kind != "directional")
        json_.key("range").real(light.range);
    if (light.kind == "spot")
        json_.key("spot").object([&] {
            json_.key("innerConeAngle").real(light.innerAngle);
            json_.key("outerConeAngle").real(light.outerAngle);
        });
}

void GltfSceneWriter::writeExtensions() {
    if (model_.lights.empty() && !hasTextureTransforms_)
        return;
    json_.key("extensionsUsed").array([&] {
        if (!model_.lights.empty())
            json_.text("KHR_lights_punctual");
        if (hasTextureTransforms_)
            json_.text("KHR_texture_transform");
    });
    if (!model_.lights.empty())
        json_.key("extensions").object([&] {
            json_.key("KHR_lights_punctual").object([&] {
                writeArray("lights", model_.lights, [&](const Light& light) { writeLight(light); });
            });
        });
}

} // namespace vrn::convert

#include "convert/export/GltfParts.h"

#include "convert/model/Inputs.h"
#include "convert/shared/ImageKind.h"
#include "convert/shared/Uri.h"

#include <map>

namespace vrn::convert {

void GltfParts::describeNodes() {
    json_.key("scene").integer(0);
    json_.key("scenes").array([&] {
        json_.object([&] {
            std::vector<u32> roots;
            for (u32 i = 0; i < model_.placements.size(); ++i)
                if (model_.placements[i].parent == none)
                    roots.push_back(i);
            if (!roots.empty())
                json_.key("nodes").integers(roots);
        });
    });
    list("nodes", model_.placements, [&](const Placement& placement) { describe(placement); });
    noteDepth();
}

// One level after the other.
void GltfParts::noteDepth() {
    constexpr std::size_t mostDepth = 1000;
    std::vector<u32> level;
    for (u32 i = 0; i < model_.placements.size(); ++i)
        if (model_.placements[i].parent == none)
            level.push_back(i);
    for (std::size_t depth = 0; depth <= mostDepth; ++depth) {
        std::vector<u32> next;
        for (const u32 at : level)
            next.insert(next.end(), model_.placements[at].children.begin(), model_.placements[at].children.end());
        level = std::move(next);
    }
    for (const u32 at : level)
        losses_.add("nodes nested more than 1000 deep, where many readers give up", *model_.placements[at].source);
}

// Animations and skins of other formats find nodes by their names.
std::string GltfParts::uniqueName(const Placement& placement) {
    const String wanted = displayName(*placement.source);
    std::string name = names_.make(std::string(wanted.view()));
    if (name != wanted.view())
        losses_.add("names that several nodes have, which are numbered now", *placement.source);
    return name;
}

void GltfParts::describe(const Placement& placement) {
    json_.key("name").text(uniqueName(placement));
    if (!placement.children.empty())
        json_.key("children").integers(placement.children);
    describeTransform(placement);
    if (placement.geometry != none) {
        json_.key("mesh").integer(meshes_.meshOf(placement));
        if (meshes_.hasSkin(placement))
            json_.key("skin").integer(placement.skin);
    }
    if (placement.camera != none)
        json_.key("camera").integer(placement.camera);
    if (placement.light != none)
        json_.key("extensions").object([&] {
            json_.key("KHR_lights_punctual").object([&] { json_.key("light").integer(placement.light); });
        });
}

void GltfParts::describeTransform(const Placement& placement) {
    if (placement.matrix) {
        json_.key("matrix").reals(*placement.matrix);
        return;
    }
    const Trs initial;
    if (placement.trs.translation != initial.translation)
        json_.key("translation").reals(placement.trs.translation);
    if (placement.trs.rotation != initial.rotation)
        json_.key("rotation").reals(placement.trs.rotation);
    if (placement.trs.scale != initial.scale)
        json_.key("scale").reals(placement.trs.scale);
}

void GltfParts::describeMaterials() {
    list("materials", meshes_.looks(),
         [&](const GltfMeshes::Look& look) { describe(model_.materials[look.material], look.hasTextures); });
}

void GltfParts::describe(const Material& material, bool hasTextures) {
    const auto texture = [&](const char* name, const TextureUse& use) {
        if (hasTextures && use.texture != none)
            describe(name, use);
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

void GltfParts::describe(const char* name, const TextureUse& use) {
    const TextureUse initial;
    const bool isMoved = use.offset != initial.offset || use.scale != initial.scale;
    hasTextureTransforms_ |= isMoved;
    json_.key(name).object([&] {
        json_.key("index").integer(use.texture);
        if (isMoved)
            json_.key("extensions").object([&] {
                json_.key("KHR_texture_transform").object([&] {
                    json_.key("offset").reals(use.offset);
                    json_.key("scale").reals(use.scale);
                });
            });
    });
}

GltfParts::Sampler GltfParts::samplerOf(const Texture& texture) {
    const auto wrap = [&](const std::string& name) -> u32 {
        if (name == "clamp")
            return 33071;
        if (name == "mirror")
            return 33648;
        if (!name.empty() && name != "repeat")
            losses_.add("unknown ways to repeat textures", *texture.source);
        return 10497;
    };
    const i64 filter = texture.filter;
    const bool isKnown = filter == 9728 || filter == 9729 || (filter >= 9984 && filter <= 9987);
    if (filter != 0 && !isKnown)
        losses_.add("unknown filters of textures", *texture.source);
    return {wrap(texture.wrapU), wrap(texture.wrapV), isKnown ? static_cast<u32>(filter) : 0};
}

void GltfParts::describeTextures() {
    std::map<Sampler, u32> numbers;
    std::vector<Sampler> samplers;
    std::vector<u32> used;
    for (const Texture& texture : model_.textures) {
        const auto [found, isNew] = numbers.emplace(samplerOf(texture), static_cast<u32>(samplers.size()));
        if (isNew)
            samplers.push_back(found->first);
        used.push_back(found->second);
    }
    list("samplers", samplers, [&](const Sampler& sampler) {
        json_.key("wrapS").integer(sampler.wrapS);
        json_.key("wrapT").integer(sampler.wrapT);
        if (sampler.filter != 0)
            json_.key("minFilter").integer(sampler.filter);
    });
    u32 number = 0;
    list("textures", used, [&](u32 sampler) {
        json_.key("sampler").integer(sampler);
        json_.key("source").integer(number++);
    });
    list("images", model_.textures, [&](const Texture& texture) {
        json_.key("name").text(displayName(*texture.source));
        if (texture.encoded.empty()) {
            json_.key("uri").text(uriOf(texture.file));
            return;
        }
        json_.key("bufferView").integer(buffer_.addBytes(std::as_bytes(texture.encoded)));
        json_.key("mimeType").text(isPng(texture.encoded) ? "image/png" : "image/jpeg");
    });
}

void GltfParts::describeCameras() {
    list("cameras", model_.cameras, [&](const Camera& camera) {
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

void GltfParts::describeSkins() {
    list("skins", model_.skins, [&](const Skin& skin) {
        json_.key("name").text(displayName(*skin.source));
        json_.key("joints").integers(skin.joints);
        if (!skin.inverseBind.empty())
            json_.key("inverseBindMatrices")
                .integer(buffer_.addFloats(skin.inverseBind.span(), 16, GltfBuffer::Use::Other));
        if (skin.skeleton != none)
            json_.key("skeleton").integer(skin.skeleton);
    });
}

void GltfParts::describeAnimations() {
    using enum GltfBuffer::Use;
    list("animations", model_.animations, [&](const Animation& animation) {
        json_.key("name").text(displayName(*animation.source));
        u32 sampler = 0;
        list("channels", animation.channels, [&](const Channel& channel) {
            json_.key("sampler").integer(sampler++);
            json_.key("target").object([&] {
                json_.key("node").integer(channel.target);
                json_.key("path").text(channel.path);
            });
        });
        list("samplers", animation.channels, [&](const Channel& channel) {
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

void GltfParts::describe(const Light& light) {
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

void GltfParts::describeExtensions() {
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
                list("lights", model_.lights, [&](const Light& light) { describe(light); });
            });
        });
}

} // namespace vrn::convert

#include "convert/import/gltf/GltfImport.h"

#include "convert/import/gltf/GltfAnimationImport.h"
#include "convert/import/gltf/GltfContainer.h"
#include "convert/import/gltf/GltfContext.h"
#include "convert/import/gltf/GltfMaterialImport.h"
#include "convert/import/gltf/GltfMeshImport.h"
#include "convert/import/gltf/GltfNodeImport.h"
#include "convert/import/gltf/GltfSceneImport.h"
#include "convert/import/gltf/GltfSkinImport.h"
#include "convert/import/gltf/GltfTextureImport.h"
#include "convert/shared/FileContent.h"
#include "convert/shared/Readable.h"

#include <algorithm>
#include <cctype>

namespace vrn::convert {

namespace {

constexpr std::string_view supportedExtensions[] = {
    "EXT_mesh_gpu_instancing",    "EXT_meshopt_compression",    "EXT_texture_webp",
    "KHR_draco_mesh_compression", "KHR_lights_punctual",        "KHR_materials_anisotropy",
    "KHR_materials_clearcoat",    "KHR_materials_dispersion",   "KHR_materials_emissive_strength",
    "KHR_materials_ior",          "KHR_materials_iridescence",  "KHR_materials_sheen",
    "KHR_materials_specular",     "KHR_materials_transmission", "KHR_materials_unlit",
    "KHR_materials_variants",     "KHR_materials_volume",       "KHR_mesh_quantization",
    "KHR_texture_basisu",         "KHR_texture_transform",
};

void checkVersion(const GltfValue& root) {
    const GltfValue asset = root["asset"].required();
    const GltfValue version = asset["minVersion"].exists() ? asset["minVersion"] : asset["version"];
    const std::string_view text = version.required().text();
    if (asset["minVersion"].exists() ? text != "2.0" : !text.starts_with("2."))
        version.refuse("only glTF 2.0 can be read");
}

void checkExtensions(const GltfValue& root) {
    root["extensionsRequired"].forEach([&](const GltfValue& extension, u64) {
        if (std::ranges::find(supportedExtensions, extension.text()) == std::end(supportedExtensions))
            extension.refuse("the file cannot be read without the extension " + std::string(extension.text()) +
                             ", which is not supported");
    });
}

using TypeTest = bool (GltfValue::*)() const noexcept;

bool areAll(const GltfValue& list, TypeTest isRight) {
    bool areRight = list.isArray();
    for (u64 i = 0; areRight && i < list.size(); ++i)
        areRight = (list[i].*isRight)();
    return areRight;
}

// What only describes other data is not lost with it, unless it is something else than a description.
class Descriptions {
public:
    explicit Descriptions(Losses& losses) : losses_(losses) {}

    void ignoreIn(const GltfValue& root) {
        root["asset"].ignore({"version", "minVersion"});
        ignoreOne(root["asset"]["generator"], &GltfValue::isText);
        ignoreList(root["extensionsUsed"], &GltfValue::isText);
        root["accessors"].forEach([&](const GltfValue& accessor, u64) {
            accessor.ignore({"bufferView", "byteOffset", "componentType", "count", "normalized", "sparse", "type"});
            ignoreOne(accessor["name"], &GltfValue::isText);
            ignoreList(accessor["min"], &GltfValue::isNumber);
            ignoreList(accessor["max"], &GltfValue::isNumber);
        });
        root["bufferViews"].forEach([&](const GltfValue& view, u64) {
            view.ignore({"buffer", "byteLength", "byteOffset", "byteStride"});
            ignoreOne(view["name"], &GltfValue::isText);
            ignoreOne(view["target"], &GltfValue::isNumber);
            view.extension("EXT_meshopt_compression").ignore();
        });
        root["buffers"].forEach([&](const GltfValue& buffer, u64) {
            buffer.ignore({"byteLength", "uri"});
            ignoreOne(buffer["name"], &GltfValue::isText);
            const GltfValue compression = buffer.extension("EXT_meshopt_compression");
            ignoreOne(compression, &GltfValue::isObject);
            if (compression.isObject())
                ignoreOne(compression["fallback"], &GltfValue::isBoolean);
        });
    }

private:
    void ignoreOne(const GltfValue& value, TypeTest isRight) { ignore(value, (value.*isRight)()); }
    void ignoreList(const GltfValue& list, TypeTest isRight) { ignore(list, areAll(list, isRight)); }

    void ignore(const GltfValue& value, bool isRight) {
        value.ignore();
        if (value.exists() && !isRight)
            losses_.add("descriptions of the wrong type", [&] { return String(std::string_view(value.pointer())); });
    }

    Losses& losses_;
};

std::string_view lastStep(std::string_view pointer) { return pointer.substr(pointer.rfind('/') + 1); }

void reportUnread(const GltfJson& json, Losses& losses) {
    json.forEachCutText([&](const GltfValue& text) {
        losses.add("characters from U+0000 on in texts", [&] { return String(std::string_view(text.pointer())); });
    });
    json.forEachUnread([&](std::string_view name, const std::string& pointer) {
        const std::string parent = pointer.substr(0, pointer.rfind('/'));
        const std::string grandparent = parent.substr(0, parent.rfind('/'));
        if (lastStep(parent) == "extensions")
            losses.add("extension " + std::string(name), String(std::string_view(grandparent)));
        else if (name == "extras")
            losses.add("extras of objects without a counterpart", String(std::string_view(parent)));
        else if (std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c) != 0; }))
            losses.add("unused " + std::string(lastStep(parent)), String(std::string_view(pointer)));
        else
            losses.add("member " + std::string(name), String(std::string_view(parent)));
    });
}

} // namespace

void importGltf(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                const ReadListener& listener) {
    checkReadable(path);
    const std::string bytes = readContent(path);
    const GltfContainer container = openContainer(path, bytes);
    const GltfJson json(path, container.json);
    if (listener)
        listener(0.5); // the rest of the work is not proportional to the bytes
    GltfBuffers buffers(json, container.binary);
    GltfAccessors accessors(json, buffers, scene.limits().maxBufferBytes);
    GltfContext context{.root = json.root(),
                        .buffers = buffers,
                        .accessors = accessors,
                        .scene = scene,
                        .losses = losses,
                        .paths = paths};
    checkVersion(context.root);
    checkExtensions(context.root);
    importTextures(context);
    importMaterials(context);
    importMeshes(context);
    importNodes(context);
    importSkins(context);
    importAnimations(context);
    importScenes(context);
    Descriptions(losses).ignoreIn(context.root);
    reportUnread(json, losses);
}

} // namespace vrn::convert

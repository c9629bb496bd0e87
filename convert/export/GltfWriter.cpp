#include "convert/export/GltfWriter.h"

#include "convert/export/GltfMaterials.h"
#include "convert/export/GltfMeshes.h"
#include "convert/export/GltfObjects.h"
#include "convert/export/GltfSceneWriter.h"
#include "convert/model/ModelBuilder.h"
#include "convert/shared/Errors.h"
#include "convert/shared/LittleEndian.h"
#include "convert/shared/Uri.h"
#include "scene/core/OutputFile.h"

#include <filesystem>

namespace vrn::convert {

using vor::OutputFile;

namespace {

constexpr TargetFormat gltf{.hasPolygons = false,
                            .hasLinesAndPoints = true,
                            .hasMaterials = true,
                            .hasScene = true,
                            .hasNormals = true,
                            .hasColors = true,
                            .hasTangents = true,
                            .maxUvsets = 8};

constexpr u64 maxGlbBytes = 0xFFFFFFFF; // lengths have 32 bits

Model buildGltfModel(const Scene& scene, const std::string& path, const TexturePaths& paths, Losses& losses) {
    Model model = buildModel(scene, gltf, paths, losses);
    if (model.nodes.empty() && model.scenes.empty())
        throw ContentError(path, "the scene has no node that can be written");
    return model;
}

void writeJson(JsonText& json, const Model& model, GltfBuffer& buffer, std::string_view bufferUri, Losses& losses) {
    GltfExtensions extensions;
    GltfMeshes meshes(model, buffer, extensions, losses);
    GltfSceneWriter writer(model, meshes, buffer, extensions, losses, json);
    GltfMaterials materials(model, meshes, buffer, extensions, losses, json);
    json.object([&] {
        json.key("asset").object([&] {
            json.key("version").text("2.0");
            json.key("generator").text("vrn");
            if (!model.asset)
                return;
            if (const Input* copyright = model.asset->input("copyright"))
                json.key("copyright").text(copyright->value().asString());
            writeExtras(json, *model.asset, "extras", losses);
        });
        writer.writeNodes();
        meshes.writeJson(json);
        materials.writeMaterials();
        materials.writeTextures();
        writer.writeCameras();
        writer.writeSkins();
        writer.writeAnimations();
        writer.writeExtensions();
        if (model.asset)
            writeExtras(json, *model.asset, "fileExtras", losses);
        buffer.writeJson(json, bufferUri);
    });
}

} // namespace

void writeGlb(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths) {
    const Model model = buildGltfModel(scene, path, paths, losses);
    GltfBuffer buffer;
    JsonText json;
    writeJson(json, model, buffer, "", losses);
    std::string text(json.view());
    text.append((4 - text.size() % 4) % 4, ' ');
    const u64 binaryChunk = buffer.size() == 0 ? 0 : 8 + buffer.size();
    const u64 size = 12 + 8 + text.size() + binaryChunk;
    if (size > maxGlbBytes)
        throw FileError(path, "a .glb holds at most 4 GiB; convert to .gltf instead");
    OutputFile file(path);
    file.write("glTF" + littleEndian32(2) + littleEndian32(size));
    file.write(littleEndian32(text.size()) + "JSON" + text);
    if (binaryChunk != 0)
        file.write(littleEndian32(buffer.size()) + std::string("BIN\0", 4));
    buffer.writeBytes(file);
    file.commit();
}

void writeGltf(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths) {
    const Model model = buildGltfModel(scene, path, paths, losses);
    GltfBuffer buffer;
    JsonText json;
    std::filesystem::path binary(path);
    binary.replace_extension(".bin");
    writeJson(json, model, buffer, uriOf(binary.filename().string()), losses);
    OutputFile file(path);
    file.write(json.view());
    file.write("\n");
    if (buffer.size() != 0) {
        OutputFile binaryFile(binary.string());
        buffer.writeBytes(binaryFile);
        binaryFile.commit();
    }
    file.commit();
}

} // namespace vrn::convert

#include "convert/export/GltfWriter.h"

#include "convert/export/GltfMeshes.h"
#include "convert/export/GltfParts.h"
#include "convert/shared/Errors.h"
#include "convert/shared/Uri.h"
#include "scene/core/OutputFile.h"

#include <cstring>
#include <filesystem>

namespace vrn::convert {

namespace {

constexpr u64 mostBytes = 0xFFFFFFFF; // of a .glb: its lengths have 32 bits

void describe(JsonText& json, const Model& model, GltfBuffer& buffer, std::string_view binary, Losses& losses) {
    GltfMeshes meshes(model, buffer, losses);
    GltfParts parts(model, meshes, buffer, losses, json);
    json.object([&] {
        json.key("asset").object([&] {
            json.key("version").text("2.0");
            json.key("generator").text("vrn");
        });
        parts.describeNodes();
        meshes.describe(json);
        parts.describeMaterials();
        parts.describeTextures();
        parts.describeCameras();
        parts.describeSkins();
        parts.describeAnimations();
        parts.describeExtensions();
        buffer.describe(json, binary);
    });
}

std::string word(u64 number) {
    const auto bytes = static_cast<u32>(number);
    std::string text(4, '\0');
    std::memcpy(text.data(), &bytes, 4);
    return text;
}

} // namespace

void writeGlb(const Model& model, const std::string& path, Losses& losses) {
    GltfBuffer buffer;
    JsonText json;
    describe(json, model, buffer, "", losses);
    std::string text(json.view());
    text.append((4 - text.size() % 4) % 4, ' ');
    const u64 binary = buffer.size() == 0 ? 0 : 8 + buffer.size();
    const u64 size = 12 + 8 + text.size() + binary;
    if (size > mostBytes)
        throw FileError(path, "a .glb holds at most 4 GiB; convert to .gltf instead");
    OutputFile file(path);
    file.write("glTF" + word(2) + word(size));
    file.write(word(text.size()) + "JSON" + text);
    if (binary != 0)
        file.write(word(buffer.size()) + std::string("BIN\0", 4));
    buffer.write(file);
    file.commit();
}

void writeGltf(const Model& model, const std::string& path, Losses& losses) {
    GltfBuffer buffer;
    JsonText json;
    std::filesystem::path binary(path);
    binary.replace_extension(".bin");
    describe(json, model, buffer, uriOf(binary.filename().string()), losses);
    OutputFile file(path);
    file.write(json.view());
    file.write("\n");
    if (buffer.size() != 0) {
        OutputFile numbers(binary.string());
        buffer.write(numbers);
        numbers.commit();
    }
    file.commit();
}

} // namespace vrn::convert

#include "convert/Convert.h"

#include "convert/export/GltfWriter.h"
#include "convert/export/ObjWriter.h"
#include "convert/export/PlyWriter.h"
#include "convert/export/StlWriter.h"
#include "convert/import/assimp/AssimpImport.h"
#include "scene/SceneJson.h"
#include "scene/VrnWriter.h"
#include "scene/core/OutputFile.h"

#include <algorithm>
#include <assimp/Importer.hpp>

namespace vrn::convert {

using vor::OutputFile;
using vor::velmo_sdk::impl::VrnLoss;

namespace {

using WriteFunction = void (*)(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
                               const WriteOptions& options);

// Images and other large buffers are compressed: they are smaller, and nobody reads them as text.
void writeVrnFile(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths&,
                  const WriteOptions&) {
    OutputFile file(path);
    const auto lost = writeVrn(scene, {.compressAbove = 4096}, [&](std::string_view text) { file.write(text); });
    for (const VrnLoss& loss : lost)
        losses.add(loss.what, loss.path);
    file.commit();
}

void writeJsonFile(const Scene& scene, const std::string& path, Losses&, const TexturePaths&, const WriteOptions&) {
    OutputFile file(path);
    writeSceneJson(scene, {}, [&](std::string_view text) { file.write(text); });
    file.commit();
}

// The writer of a format that has one form.
template <auto write>
void writeOneForm(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
                  const WriteOptions&) {
    write(scene, path, losses, paths);
}

struct Format {
    const char* extension;
    WriteFunction write;
    bool hasTwoForms = false;
};

constexpr Format formats[] = {
    {".vrn", writeVrnFile},           {".json", writeJsonFile},         {".gltf", writeOneForm<writeGltf>},
    {".glb", writeOneForm<writeGlb>}, {".obj", writeOneForm<writeObj>}, {".ply", writePly, true},
    {".stl", writeStl, true},
};

const Format* findFormat(const std::string& extension) {
    const auto* format = std::ranges::find(formats, extension, &Format::extension);
    return format != std::end(formats) ? format : nullptr;
}

} // namespace

bool canRead(const std::string& format) { return !format.empty() && Assimp::Importer().IsExtensionSupported(format); }

bool canWrite(const std::string& format) { return findFormat(format) != nullptr; }

bool hasTwoForms(const std::string& format) {
    const Format* found = findFormat(format);
    return found && found->hasTwoForms;
}

std::string readableExtensions() {
    std::string list;
    Assimp::Importer().GetExtensionList(list); // `*.3ds;*.obj;...`
    std::string extensions;
    for (const char c : list)
        if (c != '*')
            extensions += c == ';' ? std::string(" ") : std::string(1, c);
    return extensions;
}

std::string writableExtensions() {
    std::string extensions;
    for (const Format& format : formats)
        extensions += (extensions.empty() ? "" : " ") + std::string(format.extension);
    return extensions;
}

void readModel(const std::string& path, Scene& scene, Losses& losses, const TexturePaths& paths,
               const ReadOptions& options, const ReadListener& listener) {
    importModel(path, scene, paths, losses, options, listener);
}

void writeScene(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
                const WriteOptions& options) {
    const Format* format = findFormat(options.format.empty() ? extensionOf(path) : options.format);
    if (!format)
        throw FileError(path, "files with this extension cannot be written");
    format->write(scene, path, losses, paths, options);
}

} // namespace vrn::convert

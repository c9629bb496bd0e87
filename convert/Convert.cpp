#include "convert/Convert.h"

#include "convert/export/GltfWriter.h"
#include "convert/export/ObjWriter.h"
#include "convert/export/PlyWriter.h"
#include "convert/export/StlWriter.h"
#include "convert/import/assimp/AssimpImport.h"
#include "convert/import/gltf/GltfImport.h"
#include "scene/SceneJson.h"
#include "scene/VrnWriter.h"
#include "scene/core/OutputFile.h"

#include <algorithm>
#include <set>

namespace vrn::convert {

using vor::OutputFile;
using vor::velmo_sdk::impl::VrnLoss;

namespace {

using WriteFunction = void (*)(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
                               const WriteOptions& options);

// Images and other large buffers are compressed: they are smaller, and nobody reads them as text.
void writeVrn(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths&, const WriteOptions&) {
    for (const VrnLoss& loss : writeVrnFile(scene, std::string_view(path), {.compressAbove = 4096}))
        losses.add(loss.what, loss.path);
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
    {".vrn", writeVrn},
    {".json", writeJsonFile},
    {".gltf", writeOneForm<writeGltf>},
    {".glb", writeOneForm<writeGlb>},
    {".obj", writeOneForm<writeObj>},
    {".ply", writePly, true},
    {".stl", writeStl, true},
};

const Format* findFormat(const std::string& extension) {
    const auto* format = std::ranges::find(formats, extension, &Format::extension);
    return format != std::end(formats) ? format : nullptr;
}

bool isGltf(const std::string& format) { return format == ".gltf" || format == ".glb"; }

std::set<std::string> readableFormats() {
    std::set<std::string> readable = assimpExtensions();
    readable.insert({".gltf", ".glb"});
    return readable;
}

} // namespace

bool canRead(const std::string& format) { return readableFormats().contains(format); }

bool canWrite(const std::string& format) { return findFormat(format) != nullptr; }

bool hasTwoForms(const std::string& format) {
    const Format* found = findFormat(format);
    return found && found->hasTwoForms;
}

std::string readableExtensions() {
    std::string extensions;
    for (const std::string& format : readableFormats())
        extensions += (extensions.empty() ? "" : " ") + format;
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
    const std::string format = options.format.empty() ? extensionOf(path) : options.format;
    if (!isGltf(format))
        return importModel(path, scene, paths, losses, options, listener);
    importGltf(path, scene, paths, losses, listener);
    place(scene, withOptions({}, options.placement), losses);
}

void writeScene(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
                const WriteOptions& options) {
    const Format* format = findFormat(options.format.empty() ? extensionOf(path) : options.format);
    if (!format)
        throw FileError(path, "files with this extension cannot be written");
    format->write(scene, path, losses, paths, options);
}

} // namespace vrn::convert

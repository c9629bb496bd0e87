// Conversion between scenes and other scene and mesh formats.
//
//     Scene scene;
//     Losses losses;
//     readModel("chair.fbx", scene, losses, {});
//     writeScene(scene, "chair.glb", losses, {});
//
// The extension of a file determines its format. What cannot be converted is left out and added to the losses.
#pragma once

#include "convert/export/WriteOptions.h"
#include "convert/import/ReadOptions.h"
#include "convert/scenes/ImageFiles.h"
#include "convert/scenes/Placement.h"
#include "convert/scenes/SceneMerge.h"
#include "convert/shared/Errors.h"
#include "convert/shared/Extension.h"
#include "convert/shared/Losses.h"
#include "convert/shared/ReadListener.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <string>

namespace vrn::convert {

// Whether a format, an extension with its dot in lower case, is supported; and those that are, separated by spaces. VRN
// files are written here but read by the reader, so `.vrn` is only writable.
[[nodiscard]] bool canRead(const std::string& format);
[[nodiscard]] bool canWrite(const std::string& format);
[[nodiscard]] std::string readableExtensions();
[[nodiscard]] std::string writableExtensions();

// Whether a format is written as binary or, with WriteOptions::isAscii, as text.
[[nodiscard]] bool hasTwoForms(const std::string& format);

// Reads a file of another format into an empty scene, Y up and in metres. Throws FileError and ContentError.
void readModel(const std::string& path, Scene& scene, Losses& losses, const TexturePaths& paths,
               const ReadOptions& options = {}, const ReadListener& listener = {});

// Writes a scene; on failure, no file is replaced. VRN and JSON keep texture paths unchanged. Throws FileError,
// ContentError and vor::OutputFileError.
void writeScene(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
                const WriteOptions& options = {});

} // namespace vrn::convert

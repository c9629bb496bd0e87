// Scenes from and to other formats of scenes and meshes.
//
//     Scene scene;
//     Losses losses;
//     readModel("chair.fbx", scene, losses, {});
//     writeScene(scene, "chair.glb", losses, {});
//
// Which format a file has says its extension. What cannot be carried over is left out and noted among the losses.
#pragma once

#include "convert/shared/Errors.h"
#include "convert/shared/Extension.h"
#include "convert/shared/Losses.h"
#include "convert/shared/ReadListener.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <string>

namespace vrn::convert {

// Whether there is a way to read, or write, files of that name, and the extensions for which there is, for people.
// Texts of scenes are written here, too, but the reader reads them.
[[nodiscard]] bool canRead(const std::string& path);
[[nodiscard]] bool canWrite(const std::string& path);
[[nodiscard]] std::string readableExtensions();
[[nodiscard]] std::string writableExtensions();

// Reads any other format into an empty scene. Throws FileError and ContentError.
void readModel(const std::string& path, Scene& scene, Losses& losses, const TexturePaths& paths,
               const ReadListener& listener = {});

// Writes a scene, as a whole or not at all; texts and JSON keep the paths of textures that it has. Throws FileError and
// ContentError.
void writeScene(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);

} // namespace vrn::convert

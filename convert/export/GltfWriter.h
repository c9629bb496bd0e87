// Writes glTF 2.0: a self-contained `.glb`, or a `.gltf` with a `.bin` next to it.
//
// Buffers of the scene are written bit for bit, without a copy.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"

#include <string>

namespace vrn::convert {

// Throw FileError and vor::OutputFileError. A .glb of more than 4 GiB is a FileError.
void writeGlb(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);
void writeGltf(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);

} // namespace vrn::convert

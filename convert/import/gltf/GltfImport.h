// Reads glTF 2.0: .gltf, and .glb.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/ReadListener.h"
#include "convert/shared/TexturePaths.h"

#include <string>

namespace vrn::convert {

// Fills an empty scene. What the file contains and the scene does not is added to the losses. Throws FileError if the
// file cannot be read, and ContentError with the place, a JSON pointer, if its content is invalid or needs an extension
// that is not supported.
void importGltf(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                const ReadListener& listener);

} // namespace vrn::convert

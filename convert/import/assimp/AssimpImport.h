// Imports the formats that Assimp reads.
#pragma once

#include "convert/import/ReadOptions.h"
#include "convert/shared/Errors.h"
#include "convert/shared/Losses.h"
#include "convert/shared/ReadListener.h"
#include "convert/shared/TexturePaths.h"

#include <set>
#include <string>

namespace vrn::convert {

// The extensions of the formats, with their dots, in lower case; among them those of glTF, which is read otherwise.
// None in a build without Assimp, in which importModel throws FileError.
[[nodiscard]] std::set<std::string> assimpExtensions();

// Reads a file into an empty scene, with texture paths rebased by `paths`. `listener` may be empty. Throws FileError
// and ContentError.
void importModel(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                 const ReadOptions& options, const ReadListener& listener);

} // namespace vrn::convert

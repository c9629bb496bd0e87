// Catalogues by the names that users give them.
//
//     scene.setCatalogue(readNamedCatalogue("builtin"));
//
// A catalogue never changes, and any number of scenes and threads may share it. Linear in the text.
#pragma once

#include "scene/Catalogue.h"
#include "scene/core/String.h"

#include <memory>
#include <stdexcept>
#include <string_view>

namespace vrn::inspect {

// The name of the catalogue that the library contains, and its text: catalogues/scene.json.
inline constexpr char builtinTypes[] = "builtin";
extern const std::string_view builtinCatalogue; // the build makes its source file

// A file that cannot be read; what() is the reason of the operating system.
class UnreadableFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The catalogue in a file, or the built-in one. Throws UnreadableFile, and CatalogueError (scene/CatalogueJson.h) if
// the file contains none.
[[nodiscard]] std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> readNamedCatalogue(const vor::String& name);

} // namespace vrn::inspect

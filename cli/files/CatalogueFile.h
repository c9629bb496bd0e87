// Reads the catalogue that a command uses.
#pragma once

#include "scene/Catalogue.h"

#include <memory>
#include <string>

namespace vrn::cli {

// The variable for when --types is absent.
inline constexpr char typesVariable[] = "VRN_TYPES";

struct UnusableCatalogue {};

// The catalogue of --types or, if that is empty, of the environment; null if neither names one. If it cannot be read,
// reports that and throws UnusableCatalogue.
[[nodiscard]] std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> loadCatalogue(const std::string& types);

} // namespace vrn::cli

// The application's own data in glTF objects, which scenes keep as JSON text.
#pragma once

#include "convert/model/Model.h"
#include "scene/JsonWriter.h"

namespace vrn::convert {

using vor::velmo_sdk::impl::JsonText;

// Writes the member `extras` if the node has that input. A loss if its text is not JSON.
void writeExtras(JsonText& json, const Node& node, const char* input, Losses& losses);

// The same for a mesh, with the names of its morph targets, which by convention are the member `targetNames`.
void writeMeshExtras(JsonText& json, const Geometry& geometry, Losses& losses);

} // namespace vrn::convert

// What the objects of a glTF file have in common: lists of them, names, and data of the application, which scenes keep
// as JSON text.
#pragma once

#include "convert/model/Model.h"
#include "scene/JsonWriter.h"

namespace vrn::convert {

using vor::velmo_sdk::impl::JsonText;

// Writes an array member with an object per item; nothing if there are no items.
template <class Items> void writeArray(JsonText& json, const char* name, const Items& items, auto writeItem) {
    if (std::empty(items))
        return;
    json.key(name).array([&] {
        for (const auto& item : items)
            json.object([&] { writeItem(item); });
    });
}

// Writes the member `name`.
void writeName(JsonText& json, const Node& node);

// The JSON in the input of a node at a path; empty if there is none, and with a loss if its text is not JSON.
[[nodiscard]] std::string extrasOf(const Node& node, const char* path, Losses& losses);

// Writes the member `extras` if the node has such an input.
void writeExtras(JsonText& json, const Node& node, const char* path, Losses& losses);

// The same for a mesh, with the names of its morph targets, which by convention are the member `targetNames`.
void writeMeshExtras(JsonText& json, const Geometry& geometry, Losses& losses);

} // namespace vrn::convert

// Catalogues from JSON files.
//
//     {"types": {"camera": {
//         "inputs": {"fov": {"type": "Real", "default": 45.0},
//                    "projection": {"type": "String", "enum": ["perspective", "orthographic"]},
//                    "curve": {"type": "Buffer", "dataType": "Vec2f"},
//                    "children": {"type": "Array", "elementType": "Node", "linkOnly": true}},
//         "outputs": ["image"],
//         "renamedInputs": {"fovy": "fov"}, "renamedOutputs": {"result": "image"}}}}
//
// Every member is optional but an input's "type", an AttrType name; inputs stand in the order of the
// file. "default" is a boolean, number, string, or an array of as many numbers as the type has
// components, where "inf", "-inf" and "nan" stand for numbers that JSON has not; types without a
// literal take none. "dataType" belongs to Buffer, "elementType" to Array, "enum" to String, "locked"
// and "linkOnly" to any.
#pragma once

#include "scene/Catalogue.h"
#include "scene/core/Export.h"
#include "scene/core/Log.h"

#include <stdexcept>

namespace vor::velmo_sdk::impl {

// Says what is wrong with a catalogue, what was expected and where it stands: `line` and `column`,
// counted from 1 in bytes, are those of the last character of the value at fault.
class VRN_API CatalogueError : public std::runtime_error {
public:
    CatalogueError(const std::string& text, TextPosition position) : std::runtime_error(text), position_(position) {}
    [[nodiscard]] TextPosition position() const noexcept { return position_; }

private:
    TextPosition position_;
};

// Reads a whole catalogue; throws CatalogueError if it breaks a rule, names something unknown or holds
// a key twice. Linear in the text.
[[nodiscard]] VRN_API Catalogue readCatalogue(std::string_view json);

} // namespace vor::velmo_sdk::impl

// Reads catalogues from JSON.
//
//     {"types": {"camera": {
//         "inputs": {"fov": {"type": "Real", "default": 45.0},
//                    "projection": {"type": "String", "enum": ["perspective", "orthographic"]},
//                    "curve": {"type": "Buffer", "dataType": "Vec2f"},
//                    "children": {"type": "Array", "elementType": "Node", "linkOnly": true}},
//         "outputs": ["image"],
//         "renamedInputs": {"fovy": "fov"}, "renamedOutputs": {"result": "image"}}}}
//
// Only the "type" of an input, the name of an AttrType, is required. Inputs keep the order of the file. "default" is a
// boolean, a number, a string, or an array with one number per component; "inf", "-inf" and "nan" are numbers, too.
// Null, Node, Buffer, Array and Object have no default. "dataType" is only valid for Buffer, "elementType" for Array
// and "enum" for String; "locked" and "linkOnly" are valid for all types. docs/catalogue.md describes the members that
// are for checks only. They are checked here, too: every path must lead to an input of the type.
#pragma once

#include "scene/Catalogue.h"
#include "scene/core/Export.h"
#include "scene/core/Log.h"

#include <stdexcept>

namespace vor::velmo_sdk::impl {

// what() states what was found and expected. The position is that of the last byte of the invalid value (for an object
// or array, of its first); lines and columns, in bytes, start at 1.
class VRN_API CatalogueError : public std::runtime_error {
public:
    CatalogueError(const std::string& text, TextPosition position) : std::runtime_error(text), position_(position) {}
    [[nodiscard]] TextPosition position() const noexcept { return position_; }

private:
    TextPosition position_;
};

// Reads a whole catalogue. Throws CatalogueError for malformed JSON, an unknown key or type, a value of the wrong kind
// or a repeated key. O(n log n) in the text; safe on any thread.
[[nodiscard]] VRN_API Catalogue readCatalogue(std::string_view json);

} // namespace vor::velmo_sdk::impl

// An input together with what the catalogue says of it, and the inputs that the catalogue's paths lead to from there.
#pragma once

#include "scene/Catalogue.h"
#include "scene/Node.h"

#include <span>
#include <string_view>

namespace vrn::check {

using vor::velmo_sdk::impl::Input;
using vor::velmo_sdk::impl::InputType;
using vor::velmo_sdk::impl::Node;

struct Declared {
    const Input& input;
    const InputType& type;               // of the input or, if it is an element, of its array
    std::span<const InputType> siblings; // what the catalogue declares next to it, itself included
};

// The input at the end of a path of the catalogue, or null. `[]` leads to the element that contains `from`. Linear in
// the path.
[[nodiscard]] const Input* follow(const Input& from, std::string_view path);

// Whether the input has elements, if it is a buffer or an array, or any other value but "". Links count as values.
[[nodiscard]] bool hasContents(const Input& input);

} // namespace vrn::check

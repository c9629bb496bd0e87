// Values of inputs as JSON.
//
//     writeJsonLine(sink, [&](JsonLine& json) { writeJsonValue(json, input); });
//
// The scene is only read. Linear in the values; memory proportional to the depth of the inputs.
#pragma once

#include "inspect/value/JsonLines.h"
#include "scene/Input.h"

namespace vrn::inspect {

using vor::velmo_sdk::impl::Input;

// Elements of a buffer, each a number or an array of numbers: `count` of them from `first` on, or a single one.
void writeJsonElements(JsonLine& json, const vor::velmo_sdk::AttrData& buffer, vor::u64 first, vor::u64 count);
void writeJsonElement(JsonLine& json, const vor::velmo_sdk::AttrData& buffer, vor::u64 index);

// The values of inputs, including everything below them. References are the name of their node, connections of inputs
// without a value are `node.output`.
void writeJsonObject(JsonLine& json, std::span<const Input* const> members);
void writeJsonArray(JsonLine& json, std::span<const Input* const> elements);
void writeJsonValue(JsonLine& json, const Input& input);

} // namespace vrn::inspect

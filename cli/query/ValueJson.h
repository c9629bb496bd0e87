// Values of inputs as JSON.
#pragma once

#include "cli/query/JsonLines.h"
#include "scene/Input.h"

namespace vrn::cli {

using vor::velmo_sdk::impl::Input;

// Elements of a buffer, each a number or an array of numbers: `count` of them from `first` on, or a single one.
void writeJsonElements(JsonLine& json, const vor::velmo_sdk::AttrData& buffer, vor::u64 first, vor::u64 count);
void writeJsonElement(JsonLine& json, const vor::velmo_sdk::AttrData& buffer, vor::u64 index);

// The values of inputs, including everything below them. References are the name of their node, connections of inputs
// without a value are `node.output`.
void writeJsonObject(JsonLine& json, std::span<const Input* const> members);
void writeJsonArray(JsonLine& json, std::span<const Input* const> elements);
void writeJsonValue(JsonLine& json, const Input& input);

} // namespace vrn::cli

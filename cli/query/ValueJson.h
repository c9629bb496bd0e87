// Values of inputs as JSON.
#pragma once

#include "cli/query/JsonLines.h"
#include "scene/Input.h"

namespace vrn::cli {

using vor::velmo_sdk::impl::Input;

// A real number; infinities and NaN as the strings "inf", "-inf" and "nan".
void writeJsonReal(JsonWriter& writer, double number);
void writeJsonReal(JsonWriter& writer, float number);

// The elements of a buffer from `first` on: numbers, or arrays of the numbers of each.
void writeJsonElements(JsonWriter& writer, const vor::velmo_sdk::AttrData& buffer, vor::u64 first, vor::u64 count);
void writeJsonElement(JsonWriter& writer, const vor::velmo_sdk::AttrData& buffer, vor::u64 index);

// Inputs as an object of their values; members and elements with all that is below them, references and connections
// of inputs that have no value as the text of what they lead to.
void writeJsonObject(JsonWriter& writer, std::span<const Input* const> members);
void writeJsonArray(JsonWriter& writer, std::span<const Input* const> elements);
void writeJsonValue(JsonWriter& writer, const Input& input);

} // namespace vrn::cli

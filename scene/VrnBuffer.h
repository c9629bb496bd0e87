// Formats values that are lists, which may take several lines, as the right-hand sides of VRN statements.
#pragma once

#include "scene/VrnWriter.h"

namespace vor::velmo_sdk::impl {

// The position of a value in the text: the column where it begins (`prefix`) and the indentation of its statement.
struct LinePlace {
    std::size_t prefix = 0;
    std::size_t indent = 0;
};

// Appends a buffer, whose type must have a keyword.
void appendBuffer(const AttrData& buffer, const VrnWriterOptions& options, LinePlace place, TextBlock& text);

// Appends a vector, quaternion, colour or matrix that is too long for the line, the same numbers as appendLiteral().
void appendWrappedComponents(const AttrData& value, const VrnWriterOptions& options, LinePlace place, TextBlock& text);

} // namespace vor::velmo_sdk::impl

// Buffers as the right-hand sides of VRN statements.
#pragma once

#include "scene/VrnWriter.h"

namespace vor::velmo_sdk::impl {

// Appends a buffer of a type that has a keyword. `prefix` is how far the line has come, `indent` that of the
// statement.
struct LinePlace {
    std::size_t prefix = 0;
    std::size_t indent = 0;
};
void appendBuffer(const AttrData& buffer, const VrnWriterOptions& options, LinePlace place, TextBlock& text);

} // namespace vor::velmo_sdk::impl

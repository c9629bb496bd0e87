// Values as the right-hand sides of VRN statements.
#pragma once

#include "scene/AttrData.h"
#include "scene/core/TextSink.h"

namespace vor::velmo_sdk::impl {

struct VrnWriterOptions;

// Whether a text can name something so: letters, digits and `_`, no digit first, and not `true`, `false` or `null`.
[[nodiscard]] bool isIdentifier(std::string_view name) noexcept;

// Appends a value that is no buffer, as it is read back: containers empty, a Node as none.
void appendLiteral(const AttrData& value, std::string& text);

// Appends a buffer of a type that has a keyword. `prefix` is how far the line has come, `indent` that of the
// statement.
struct LinePlace {
    std::size_t prefix = 0;
    std::size_t indent = 0;
};
void appendBuffer(const AttrData& buffer, const VrnWriterOptions& options, LinePlace place, TextBlock& text);

// Whether a NaN among the numbers would read back as another one. A Real has only one, a list also the positive one.
[[nodiscard]] bool hasForeignNaN(const AttrData& value) noexcept;

} // namespace vor::velmo_sdk::impl

// The kinds of diagnostics.
#pragma once

#include "scene/core/Log.h"

#include <string>

namespace vrn::inspect {

// The name of the kind of a finding of a check by catalogue, or of a message of the reader: `unknownInput`, `badToken`;
// null if it has none. Programs can rely on the name: it does not change when the wording does.
[[nodiscard]] const char* kindOf(const vor::LogRecord& record) noexcept;

// What marks a warning that is not the reader's: " [check]" for a notice, " [unknownInput]" for a finding of a check by
// catalogue, otherwise nothing.
[[nodiscard]] std::string markOf(const vor::LogRecord& record);

} // namespace vrn::inspect

// What marks a warning that is not the reader's.
#pragma once

#include "scene/core/Log.h"

#include <string>

namespace vrn::cli {

// " [check]" for a notice, " [unknownInput]" for a finding of a check by catalogue, otherwise nothing.
[[nodiscard]] std::string markOf(const vor::LogRecord& record);

} // namespace vrn::cli

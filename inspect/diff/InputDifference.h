// Compares two inputs without their members and elements.
#pragma once

#include "inspect/diff/SceneDifference.h"

namespace vrn::inspect {

// Reports differences in type, value and links to `sink`. Returns whether both inputs are objects or both are arrays,
// so that their members or elements can be compared.
[[nodiscard]] bool compareInputs(const vor::velmo_sdk::impl::Input& before, const vor::velmo_sdk::impl::Input& after,
                                 std::string_view path, double tolerance, const DifferenceSink& sink);

} // namespace vrn::inspect

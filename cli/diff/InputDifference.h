// What is different between two inputs, apart from what is below them.
#pragma once

#include "cli/diff/SceneDifference.h"

namespace vrn::cli {

// Says the differences of type, value and links. Whether both are objects or arrays, so that what is below them can be
// compared.
[[nodiscard]] bool compareInputs(const vor::velmo_sdk::impl::Input& before, const vor::velmo_sdk::impl::Input& after,
                                 std::string_view path, double tolerance, const DifferenceSink& sink);

} // namespace vrn::cli

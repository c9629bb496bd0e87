// Differences between scenes as text and as JSON.
#pragma once

#include "cli/diff/SceneDifference.h"
#include "cli/terminal/Style.h"

namespace vrn::cli {

// One line: `~ cam1.fov: 45 -> 50`. The middle of a path longer than 1000 bytes is omitted: there can be as many paths
// as inputs, each as long as the file.
[[nodiscard]] std::string differenceLine(const Difference& difference, const Style& style);

// Prints the difference as one line of JSON.
void printJson(const Difference& difference);

} // namespace vrn::cli

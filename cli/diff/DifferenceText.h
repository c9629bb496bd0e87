// Differences of scenes as lines for people and for programs.
#pragma once

#include "cli/diff/SceneDifference.h"
#include "cli/terminal/Style.h"

namespace vrn::cli {

// One line: `~ cam1.fov: 45 -> 50`. Paths of more than 1000 bytes lose their middle: they may be as long as a text, and
// as many.
[[nodiscard]] std::string differenceLine(const Difference& difference, const Style& style);

// The same as an object, on standard output.
void printJson(const Difference& difference);

} // namespace vrn::cli

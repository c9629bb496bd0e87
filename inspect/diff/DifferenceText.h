// Differences between scenes as text and as JSON.
//
//     std::string text;
//     compareScenes(before, after, 0, [&](const Difference& difference) {
//         text += differenceLine(difference, Style(false));
//     });
//
// The strings own what they contain. Linear in the values, which the text truncates.
#pragma once

#include "inspect/diff/SceneDifference.h"
#include "inspect/text/Style.h"

namespace vrn::inspect {

// One line: `~ cam1.fov: 45 -> 50`. The middle of a path longer than 1000 bytes is omitted: there can be as many paths
// as inputs, each as long as the file.
[[nodiscard]] std::string differenceLine(const Difference& difference, const Style& style);

// One line of JSON with its line feed: {"change", "aspect", "path", "before", "after"}; the latter two are the numbers
// that describe the difference for buffers, and "type" for what was added or removed.
[[nodiscard]] std::string differenceJson(const Difference& difference);

} // namespace vrn::inspect

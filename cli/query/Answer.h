// The values at a place of a scene, printed for shells and programs.
#pragma once

#include "cli/query/ScenePath.h"

namespace vrn::cli {

// One value a line, elements of buffers and arrays each on its own. `isLabelled` puts the path and a tab before each;
// then, and on a terminal, strings are escaped, so that a line is a line.
void printAnswer(const PathMatch& match, bool isLabelled);

// One line: {"path", "type", "value"}, of buffers also "dataType", of connected inputs also "connection".
void printAnswerJson(const PathMatch& match);

} // namespace vrn::cli

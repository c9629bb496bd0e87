// Prints the values that a path leads to.
#pragma once

#include "cli/query/ScenePath.h"

namespace vrn::cli {

// Prints one value a line; buffers and arrays print one line an element. With `isLabelled`, each line starts with the
// path and a tab. Then, and on a terminal, strings are escaped, so that they cannot contain line feeds.
void printAnswer(const PathMatch& match, bool isLabelled);

// Prints one line: {"path", "type", "value"}, with "dataType" for buffers and "connection" for connected inputs.
void printAnswerJson(const PathMatch& match);

} // namespace vrn::cli

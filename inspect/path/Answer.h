// The values that a path leads to, as text and as JSON.
//
//     forEachMatch(scene, parsePath("box.points[0:10]"),
//                  [&](const PathMatch& match) { writeAnswer(match, {.isEscaped = isTerminal}, sink); });
//
// The text goes to the sink in blocks; what it throws propagates. Keeps nothing; several threads may write what they
// find in one scene. Linear in the text.
#pragma once

#include "inspect/path/ScenePath.h"
#include "scene/core/TextSink.h"

namespace vrn::inspect {

struct AnswerLayout {
    bool isLabelled = false; // starts each line with the path and a tab, and escapes strings
    bool isEscaped = false;  // escapes strings for a terminal, so that they cannot contain line feeds
};

// Writes one value a line; buffers and arrays take one line an element.
void writeAnswer(const PathMatch& match, AnswerLayout layout, const vor::TextSink& sink);

// Writes one line: {"path", "type", "value"}, with "dataType" for buffers and "connection" for connected inputs.
void writeAnswerJson(const PathMatch& match, const vor::TextSink& sink);

} // namespace vrn::inspect

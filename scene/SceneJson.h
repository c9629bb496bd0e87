// A scene as JSON text, for people and for programs.
//
//     writeSceneJson(scene, {.isCompact = true}, [](std::string_view text) { std::cout << text; });
//
// One object: {"version", "time", "comments", "nodes": [{"name", "type", "definition", "inputs": [...]}]}
// in order of creation; docs/json.md describes every member. Texts are written as UTF-8, whatever
// bytes the scene holds; real numbers as the shortest text that reads back the same, infinities and
// NaN as the strings "inf", "-inf" and "nan".
#pragma once

#include "scene/Scene.h"
#include "scene/core/TextSink.h"

namespace vor::velmo_sdk::impl {

struct SceneJsonOptions {
    bool isCompact = false;    // one line, no spaces
    bool hasBufferData = true; // or only the type and the count of each buffer
};

// Writes the scene in pieces of some 64 KiB, ending in a line feed; the text is never held whole. What
// `sink` throws passes through.
void writeSceneJson(const Scene& scene, const SceneJsonOptions& options, const TextSink& sink);

} // namespace vor::velmo_sdk::impl

// A scene as JSON text, for people and for programs.
//
//     writeSceneJson(scene, {.isCompact = true}, [](std::string_view text) { std::cout << text; });
//
// One object: {"version", "time", "comments", "nodes": [{"name", "type", "definition", "inputs": [...]}]}
// in order of creation; docs/json.md describes every member. Strings are valid UTF-8 whatever bytes the scene holds;
// real numbers are the shortest text that reads back the same, infinities and NaN the strings "inf", "-inf" and "nan".
#pragma once

#include "scene/Scene.h"
#include "scene/core/Export.h"
#include "scene/core/TextSink.h"

namespace vor::velmo_sdk::impl {

struct SceneJsonOptions {
    bool isCompact = false;    // one line, no spaces
    bool hasBufferData = true; // false: only the type and count of each buffer
};

// Writes the scene to `sink` in blocks of about 64 KiB, without ever holding the whole text, and ends with a line feed.
// Exceptions of `sink` pass through.
VRN_API void writeSceneJson(const Scene& scene, const SceneJsonOptions& options, const TextSink& sink);

} // namespace vor::velmo_sdk::impl

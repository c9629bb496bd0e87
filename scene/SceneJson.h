// Writes a scene as JSON.
//
//     writeSceneJson(scene, {.isCompact = true}, [](std::string_view text) { std::cout << text; });
//
// One object: {"version", "time", "comments", "nodes": [{"name", "type", "definition", "inputs": [...]}]}, with the
// nodes in order of creation; docs/json.md describes every member. Strings are valid UTF-8 even if the scene contains
// other bytes. Real numbers are the shortest text that reads back the same; infinities and NaN are the strings "inf",
// "-inf" and "nan".
#pragma once

#include "scene/Scene.h"
#include "scene/core/Export.h"
#include "scene/core/TextSink.h"

namespace vor::velmo_sdk::impl {

struct SceneJsonOptions {
    bool isCompact = false;    // one line, no spaces
    bool hasBufferData = true; // false: only the type and count of each buffer
};

// Passes the text, which ends with a line feed, to `sink` in blocks of about 64 KiB. Linear in the scene; memory grows
// with the nesting of inputs only. Propagates exceptions of `sink`, and std::bad_alloc. Several threads may write one
// scene.
VRN_API void writeSceneJson(const Scene& scene, const SceneJsonOptions& options, const TextSink& sink);

} // namespace vor::velmo_sdk::impl

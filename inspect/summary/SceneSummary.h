// Counts what a scene consists of.
//
//     const SceneSummary summary = summarise(scene);
//     show(summary.nodes, summary.nodesByType);
//
// Owns what it contains. The scene is only read: several threads may summarise it. Linear in its inputs.
#pragma once

#include "scene/Scene.h"

#include <map>
#include <string>

namespace vrn::inspect {

struct SceneSummary {
    std::map<std::string, vor::u64> nodesByType; // without definitions
    vor::u64 nodes = 0;                          // without definitions
    vor::u64 definitions = 0;
    vor::u64 inputs = 0; // at any depth
    vor::u64 buffers = 0;
    vor::u64 bufferElements = 0;
    vor::u64 bufferBytes = 0;
    vor::u64 connections = 0;
    vor::u64 references = 0;
};

[[nodiscard]] SceneSummary summarise(const vor::velmo_sdk::impl::Scene& scene);

} // namespace vrn::inspect

// checkScene: warns about what a catalogue says is wrong with a scene.
//
//     SourceMap sources;
//     parseVrn(&scene, file, false, sources);
//     for (const LogRecord& finding : checkScene(scene, catalogue, sources, {.folder = "scenes"}))
//         print(finding.position, finding.text, kindName(finding.format));
//
// Unknown names, values outside of a range or a list, links to nodes of other types, indices and counts that do not
// match their buffers, missing files, cycles in the hierarchy, and unused nodes. What is right is up to the catalogue;
// no node type is known in advance. The check never changes the scene, and takes time linear in the scene and the
// buffers that the catalogue has rules for.
#pragma once

#include "check/Findings.h"
#include "scene/Scene.h"

#include <set>
#include <string>
#include <vector>

namespace vrn::check {

struct Options {
    std::set<std::string> ignored{}; // names of kinds (Findings.h)
    bool isPedantic = false;         // reports unused nodes, too
    std::string folder{};            // of the scene, which its files are relative to; empty for the current one
};

// The findings by position, as warnings. `sources` must come from the text that the scene was read from.
[[nodiscard]] std::vector<vor::LogRecord> checkScene(const vor::velmo_sdk::impl::Scene& scene,
                                                     const vor::velmo_sdk::impl::Catalogue& catalogue,
                                                     const SourceMap& sources, const Options& options);

} // namespace vrn::check

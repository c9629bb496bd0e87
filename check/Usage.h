// Finds nodes that nothing uses.
#pragma once

#include "check/Findings.h"
#include "scene/Scene.h"

namespace vrn::check {

// Reports the nodes of the catalogue's types that no other node refers to or is connected to, except those of root
// types, and the definitions that no node has as its type. Linear in the scene.
void checkUsage(const vor::velmo_sdk::impl::Scene& scene, const vor::velmo_sdk::impl::Catalogue& catalogue,
                Findings& findings);

} // namespace vrn::check

// Checks that references and connections lead to nodes of the types that the input accepts.
#pragma once

#include "check/Declared.h"
#include "check/Findings.h"

namespace vrn::check {

// Nodes of types that the catalogue does not declare are accepted: nothing is known of them.
void checkLink(const Declared& declared, const vor::velmo_sdk::impl::Catalogue& catalogue, Findings& findings);

} // namespace vrn::check

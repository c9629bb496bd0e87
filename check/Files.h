// Checks that the files which a scene names exist.
#pragma once

#include "check/Declared.h"
#include "check/Findings.h"

#include <string>

namespace vrn::check {

// `folder` is that of the scene. URIs are not checked, and neither are files whose contents the scene holds itself.
// Backslashes separate folders, too. Asks the file system once for each name.
void checkFile(const Declared& declared, const std::string& folder, Findings& findings);

} // namespace vrn::check

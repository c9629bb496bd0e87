// The commands of `vrn`, in the order in which its help lists them.
#pragma once

#include "cli/Command.h"

namespace vrn::cli {

[[nodiscard]] Command checkCommand();
[[nodiscard]] Command convertCommand();
[[nodiscard]] Command dumpCommand();
[[nodiscard]] Command infoCommand();

[[nodiscard]] std::vector<Command> allCommands();

} // namespace vrn::cli

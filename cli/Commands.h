// The commands of `vrn`, in the order in which its help lists them.
#pragma once

#include "cli/Command.h"

namespace vrn::cli {

[[nodiscard]] Command checkCommand();
[[nodiscard]] Command dumpCommand();
[[nodiscard]] Command infoCommand();
[[nodiscard]] Command completionCommand();
[[nodiscard]] Command manCommand();

[[nodiscard]] std::vector<Command> allCommands();

} // namespace vrn::cli

// The commands of `vrn`, in the order of its help.
#pragma once

#include "cli/arguments/Command.h"

namespace vrn::cli {

[[nodiscard]] Command checkCommand();
[[nodiscard]] Command fmtCommand();
[[nodiscard]] Command editCommand();
[[nodiscard]] Command infoCommand();
[[nodiscard]] Command treeCommand();
[[nodiscard]] Command queryCommand();
[[nodiscard]] Command graphCommand();
[[nodiscard]] Command diffCommand();
[[nodiscard]] Command dumpCommand();
[[nodiscard]] Command convertCommand();
[[nodiscard]] Command completionCommand();
[[nodiscard]] Command manCommand();

[[nodiscard]] std::vector<Command> allCommands();

} // namespace vrn::cli

// Parses the arguments of the program by the table of commands.
#pragma once

#include "cli/arguments/Command.h"

namespace vrn::cli {

// Runs the command that the arguments name and returns its exit status; reports invalid arguments on standard error.
[[nodiscard]] int runCommandLine(const std::vector<Command>& commands, int argc, char** argv);

} // namespace vrn::cli

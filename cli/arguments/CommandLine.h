// The arguments of the program: taken apart by the table of commands.
#pragma once

#include "cli/arguments/Command.h"

namespace vrn::cli {

// Runs the command that the arguments name and returns its exit status; says what is wrong with them if it cannot.
[[nodiscard]] int runCommandLine(const std::vector<Command>& commands, int argc, char** argv);

} // namespace vrn::cli

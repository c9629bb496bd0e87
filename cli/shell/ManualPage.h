// Manual pages in roff with the man(7) macros, generated from the table of commands.
#pragma once

#include "cli/arguments/Command.h"

namespace vrn::cli {

struct ManualPage {
    std::string name; // `vrn-check`; the section is 1
    std::string text;
};

// The page of the program, which refers to those of the commands.
[[nodiscard]] ManualPage programPage(const std::vector<Command>& commands);
[[nodiscard]] ManualPage commandPage(const Command& command);

} // namespace vrn::cli

// Pages of the manual, made from the table of commands: roff with the macros of man(7).
#pragma once

#include "cli/arguments/Command.h"

namespace vrn::cli {

struct ManualPage {
    std::string name; // `vrn-check`, of the section 1
    std::string text;
};

// The page of the program, which leads to the others.
[[nodiscard]] ManualPage programPage(const std::vector<Command>& commands);
[[nodiscard]] ManualPage commandPage(const Command& command);

} // namespace vrn::cli

// Scripts that let a shell complete the words behind `vrn`, made from the table of commands.
#pragma once

#include "cli/arguments/Command.h"

#include <string_view>

namespace vrn::cli {

[[nodiscard]] std::string bashCompletion(const std::vector<Command>& commands);
[[nodiscard]] std::string fishCompletion(const std::vector<Command>& commands);
[[nodiscard]] std::string zshCompletion(const std::vector<Command>& commands);

// One word of bash and zsh, whatever is in it.
[[nodiscard]] std::string shellQuoted(std::string_view text);

[[nodiscard]] std::string joined(const std::vector<std::string>& words, std::string_view between);
[[nodiscard]] std::vector<std::string> namesOf(const std::vector<Command>& commands);

// The names of the options of a command that take a value.
[[nodiscard]] std::vector<std::string> valuedNames(const Command& command);

} // namespace vrn::cli

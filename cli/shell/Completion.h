// Shell scripts that complete the arguments of `vrn`, generated from the table of commands.
#pragma once

#include "cli/arguments/Command.h"

#include <string_view>

namespace vrn::cli {

[[nodiscard]] std::string bashCompletion(const std::vector<Command>& commands);
[[nodiscard]] std::string fishCompletion(const std::vector<Command>& commands);
[[nodiscard]] std::string zshCompletion(const std::vector<Command>& commands);

// The text as a single word of bash and zsh.
[[nodiscard]] std::string shellQuoted(std::string_view text);

[[nodiscard]] std::string joined(const std::vector<std::string>& words, std::string_view separator);
[[nodiscard]] std::vector<std::string> namesOf(const std::vector<Command>& commands);

// The names of all options of a command that have a value.
[[nodiscard]] std::vector<std::string> valuedNames(const Command& command);

} // namespace vrn::cli

#include "cli/terminal/Colour.h"

#include <cstdlib>
#include <unistd.h>

namespace vrn::cli {

bool isOutputTerminal() noexcept { return isatty(STDOUT_FILENO) == 1; }

static bool isColourDisabled() noexcept {
    const char* noColor = std::getenv("NO_COLOR");
    return noColor && *noColor != '\0';
}

bool wantsColour(std::string_view when) noexcept {
    return when == "always" || (when == "auto" && isOutputTerminal() && !isColourDisabled());
}

} // namespace vrn::cli

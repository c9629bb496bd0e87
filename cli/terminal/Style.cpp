#include "cli/terminal/Style.h"

#include <cstdlib>
#include <unistd.h>

namespace vrn::cli {

bool isOutputTerminal() noexcept { return isatty(STDOUT_FILENO) == 1; }

static bool isColourDisabled() {
    const char* noColor = std::getenv("NO_COLOR");
    return noColor && *noColor != '\0';
}

Style::Style(std::string_view when)
    : isColoured_(when == "always" || (when == "auto" && isOutputTerminal() && !isColourDisabled())) {}

std::string Style::wrap(const char* code, std::string_view text) const {
    if (!isColoured_)
        return std::string(text);
    return std::string("\x1B[") + code + 'm' + std::string(text) + "\x1B[0m";
}

} // namespace vrn::cli

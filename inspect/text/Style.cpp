#include "inspect/text/Style.h"

namespace vrn::inspect {

std::string Style::wrap(const char* code, std::string_view text) const {
    if (!isColoured_)
        return std::string(text);
    return std::string("\x1B[") + code + 'm' + std::string(text) + "\x1B[0m";
}

} // namespace vrn::inspect

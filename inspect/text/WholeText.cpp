#include "inspect/text/WholeText.h"

#include <string>

namespace vrn::inspect {

vor::String readAll(vor::File file) {
    std::string text;
    for (std::string_view block = file.readBlock(); !block.empty(); block = file.readBlock())
        text += block;
    return std::string_view(text);
}

} // namespace vrn::inspect

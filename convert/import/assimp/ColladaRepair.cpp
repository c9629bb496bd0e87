#include "convert/import/assimp/ColladaRepair.h"

#include <string_view>

namespace vrn::convert {

std::string withNamedCameras(std::string content) {
    constexpr std::string_view tag = "<camera ";
    constexpr std::string_view name = "name=\"\" ";
    for (std::size_t at = 0; (at = content.find(tag, at)) != std::string::npos; at += tag.size()) {
        const std::string_view attributes = std::string_view(content).substr(at, content.find('>', at) - at);
        if (attributes.find(" name") == std::string_view::npos)
            content.insert(at + tag.size(), name);
    }
    return content;
}

} // namespace vrn::convert

#include "convert/shared/Extension.h"

#include "scene/core/String.h"

#include <filesystem>

namespace vrn::convert {

std::string extensionOf(const std::string& path) {
    return std::string(vor::String(std::filesystem::path(path).extension().string()).toLower().view());
}

} // namespace vrn::convert

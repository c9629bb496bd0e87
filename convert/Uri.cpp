#include "convert/Uri.h"

#include "scene/core/String.h"

namespace vrn::convert {

using vor::String;

namespace {

// Two letters or more in front of a colon; one alone is a drive.
bool hasScheme(std::string_view path) {
    const std::size_t colon = path.find(':');
    if (colon == std::string_view::npos || colon < 2)
        return false;
    for (const char c : path.substr(0, colon))
        if (!String::isLetter(c))
            return false;
    return true;
}

bool isPlain(char c) {
    return String::isLetter(c) || String::isDigit(c) || std::string_view("-._~/").find(c) != std::string_view::npos;
}

} // namespace

std::string uriOf(std::string_view path) {
    if (hasScheme(path))
        return std::string(path);
    const bool hasDrive = path.size() > 1 && String::isLetter(path[0]) && path[1] == ':';
    std::string uri = hasDrive ? "file:///" : "";
    for (std::size_t i = 0; i < path.size(); ++i) {
        const char c = path[i] == '\\' ? '/' : path[i];
        if (isPlain(c) || (hasDrive && i == 1)) {
            uri += c;
        } else {
            constexpr const char* digits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            uri += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return uri;
}

std::string pathOf(std::string_view uri) {
    std::string path;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] == '%' && i + 2 < uri.size() && String::isHexDigit(uri[i + 1]) && String::isHexDigit(uri[i + 2])) {
            path += static_cast<char>(16 * String::hexValue(uri[i + 1]) + String::hexValue(uri[i + 2]));
            i += 2;
        } else {
            path += uri[i];
        }
    }
    return path;
}

} // namespace vrn::convert

#include "convert/shared/Uri.h"

#include "scene/core/String.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>

namespace vrn::convert {

using vor::String;

namespace {

bool isUnreserved(char c) {
    return String::isLetter(c) || String::isDigit(c) || std::string_view("-._~/").find(c) != std::string_view::npos;
}

bool isUriCharacter(char c) {
    return isUnreserved(c) || std::string_view("%!#$&'()*+,:;=?@[]").find(c) != std::string_view::npos;
}

// Two or more letters before `://`: a single one is a drive.
bool hasScheme(std::string_view path) {
    const std::size_t end = path.find("://");
    return end != std::string_view::npos && end >= 2 && std::ranges::all_of(path.substr(0, end), String::isLetter);
}

// A data URI of an image.
bool isImageData(std::string_view path) {
    return path.starts_with("data:image/") && path.find(";base64,") != std::string_view::npos &&
           std::ranges::all_of(path, isUriCharacter);
}

bool hasDrive(std::string_view path) { return path.size() > 1 && String::isLetter(path[0]) && path[1] == ':'; }

} // namespace

bool isRelative(std::string_view path) {
    return !path.starts_with('/') && !path.starts_with('\\') && !hasDrive(path) && !hasScheme(path) &&
           !isImageData(path);
}

std::string uriOf(std::string_view path) {
    if (isImageData(path))
        return std::string(path);
    const bool isUri = hasScheme(path);
    const bool isOnDrive = hasDrive(path);
    std::string uri = isOnDrive ? "file:///" : "";
    for (std::size_t i = 0; i < path.size(); ++i) {
        const char c = path[i] == '\\' && !isUri ? '/' : path[i];
        if (isUnreserved(c) || (isUri && isUriCharacter(c)) || (isOnDrive && i == 1)) {
            uri += c;
        } else {
            const auto [high, low] = vor::hexDigits(static_cast<vor::u8>(c));
            uri += {'%', high, low};
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

// File paths as URI references of glTF, and back.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// `..\maps\my wood.png` becomes `../maps/my%20wood.png`, `C:\wood.png` becomes `file:///C:/wood.png`. In URIs, such as
// `https://...`, only characters that are not allowed are escaped.
[[nodiscard]] std::string uriOf(std::string_view path);

// Whether a path is relative: it has no scheme, drive or leading slash or backslash, and is not an embedded image.
[[nodiscard]] bool isRelative(std::string_view path);

// Percent-decodes; malformed escapes are kept.
[[nodiscard]] std::string pathOf(std::string_view uri);

} // namespace vrn::convert

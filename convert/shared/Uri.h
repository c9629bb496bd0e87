// Paths of files as the references that glTF has for them, and back.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// `..\maps\my wood.png` as `../maps/my%20wood.png`, `C:\wood.png` as `file:///C:/wood.png`; what is a reference with a
// scheme, such as `https://`, stays one.
[[nodiscard]] std::string uriOf(std::string_view path);

// Whether a path starts at the folder of its file: it has neither a scheme nor a drive nor a `/` in front.
[[nodiscard]] bool isRelative(std::string_view path);

// With `%20` and the like as the bytes that they stand for; what is no such escape stays.
[[nodiscard]] std::string pathOf(std::string_view uri);

} // namespace vrn::convert

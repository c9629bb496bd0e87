// Text in UTF-16, which some programs write.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vrn::convert {

// UTF-16 text with a byte order mark as UTF-8, without the mark; nothing for all other content. What is not valid
// becomes a replacement character.
[[nodiscard]] std::optional<std::string> utf8FromUtf16(std::string_view content);

} // namespace vrn::convert

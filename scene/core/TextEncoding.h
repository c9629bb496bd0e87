// Texts of any bytes made fit for those who take only some.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <string>

namespace vor {

// The length of the well-formed UTF-8 sequence (RFC 3629) at the start of `text`; 0 if there is none.
[[nodiscard]] VRN_API std::size_t utf8Length(std::string_view text) noexcept;

// The text as UTF-8: each byte that belongs to no well-formed sequence becomes U+FFFD.
[[nodiscard]] VRN_API String toUtf8(const String& text);

// The text as a terminal may show it: control characters (those of ASCII and of Latin-1) and bytes
// that are not UTF-8 become `\n`, `\t`, `\r` or `\xHH`; all else stays.
[[nodiscard]] VRN_API String escapeForTerminal(std::string_view text);

// Well-formed UTF-8 as a JSON string, quotes included. Control characters become `\u00HH`, those of Latin-1 and DEL
// among them, which JSON would let through and a terminal obey.
[[nodiscard]] VRN_API std::string quoteForJson(std::string_view utf8);

// Appends one character of `text`, escaped as above, to `out`; returns how many bytes it took.
// `text` must not be empty.
VRN_API std::size_t escapeCharacter(std::string_view text, std::string& out);

} // namespace vor

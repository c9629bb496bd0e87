// Strings in double quotes, the inverse of String::unescape().
#pragma once

#include <string>
#include <string_view>

namespace vor::velmo_sdk::impl {

// Appends a string in double quotes. Escapes quotes, backslashes, control characters and bytes that are not UTF-8.
void appendQuoted(std::string_view string, std::string& text);

} // namespace vor::velmo_sdk::impl

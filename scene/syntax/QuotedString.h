// Strings between double quotes. String::unescape() is the inverse.
#pragma once

#include <string>
#include <string_view>

namespace vor::velmo_sdk::impl {

// Appends a string in double quotes, with escapes for quotes, backslashes, control characters and bytes that are no
// UTF-8.
void appendQuoted(std::string_view string, std::string& text);

} // namespace vor::velmo_sdk::impl

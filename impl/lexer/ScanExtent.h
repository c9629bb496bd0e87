// ScanExtent: the result of scanning one piece of a token.
#pragma once

#include <cstddef>

namespace vor::velmo_sdk::impl {

enum class ScanEnd {
    Closed,       // the closing character has been found
    BadCharacter, // the token may not contain the next character
    EndOfText,    // the token continues after the piece, or the text ends
};

struct ScanExtent {
    std::size_t length = 0; // up to and including the closing character, or up to the character that ended the scan
    ScanEnd end = ScanEnd::EndOfText;
};

} // namespace vor::velmo_sdk::impl

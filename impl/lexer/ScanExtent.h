// How far a token goes that is read piece by piece.
#pragma once

#include <cstddef>

namespace vor::velmo_sdk::impl {

enum class ScanEnd {
    Closed,       // its closing character has been found
    BadCharacter, // a character that it may not hold
    EndOfText,    // it goes on behind the piece, or the text ends
};

struct ScanExtent {
    std::size_t length = 0; // up to and with the closing character, or up to what ended it
    ScanEnd end = ScanEnd::EndOfText;
};

} // namespace vor::velmo_sdk::impl

// The elements of a buffer from the text of a braces token.
#pragma once

#include "scene/AttrData.h"
#include "scene/core/String.h"

#include <optional>
#include <string_view>

namespace vor::velmo_sdk::impl {

// How the elements of a buffer were read.
struct ElementsRead {
    u64 filledBytes = 0;            // bytes of the block that numbers were written to, unreadable ones included
    bool areReadable = true;        // whether every number was read
    std::optional<String> excess{}; // the first number that does not fit in the block
    bool isPayload = false;         // a compressed payload; no numbers
    String payloadError{};          // why it cannot be inflated; empty if it can

    friend bool operator==(const ElementsRead&, const ElementsRead&) = default;
};

// Reads the elements of a list into a buffer whose block is zero-filled and of its final size. `braces` is the list
// with its braces, its elements separated by spaces. The slow twin of BufferReader, for lists that were scanned before
// the parser knew that they belong to a buffer. An empty block is left alone, whatever the list holds.
[[nodiscard]] ElementsRead readElements(std::string_view braces, AttrData& buffer);

// Parses one number and stores it at `out`, unaligned, in the machine's byte order. False, with nothing written, if it
// is no number of the type, or if buffers have no such component.
[[nodiscard]] bool parseElement(std::string_view text, DataType type, u8* out);

} // namespace vor::velmo_sdk::impl

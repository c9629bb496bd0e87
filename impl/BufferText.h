// Reads the elements of a buffer from the text of a BRACES token.
#pragma once

#include "scene/AttrData.h"
#include "scene/core/String.h"

#include <optional>
#include <string_view>

namespace vor::velmo_sdk::impl {

// The outcome of reading the elements of a buffer.
struct ElementsRead {
    u64 filledBytes = 0;            // size of the part of the block that the numbers cover, invalid ones included
    bool areReadable = true;        // whether every number was valid
    std::optional<String> excess{}; // the first number that does not fit in the block
    bool isPayload = false;         // a compressed payload instead of numbers
    String payloadError{};          // why the payload cannot be inflated; empty if it can

    friend bool operator==(const ElementsRead&, const ElementsRead&) = default;
};

// Reads the elements of a list into a buffer, whose block must be zero-filled and have its final size. `braces` is the
// list including its braces, with elements separated by spaces. Slow counterpart of BufferReader, for lists that were
// scanned before the parser recognised a buffer. If the block is empty, the list is ignored.
[[nodiscard]] ElementsRead readElements(std::string_view braces, AttrData& buffer);

// Parses one number and stores it at `out`, which may be unaligned, in native byte order. Returns false and writes
// nothing if the text is not a number of the type, or if the type is not a component type of buffers.
[[nodiscard]] bool parseElement(std::string_view text, DataType type, u8* out);

} // namespace vor::velmo_sdk::impl

// Builds the value of a buffer from its list of elements while the list is scanned.
#pragma once

#include "impl/BufferText.h"
#include "impl/lexer/ElementSink.h"
#include "impl/numbers/NumberFiller.h"
#include "scene/AttrData.h"
#include "scene/core/Decompress.h"

#include <optional>

namespace vor::velmo_sdk::impl {

// If the elements are bytes, a list that begins with a `.` is a compressed payload.
class BufferReader final : public ElementSink {
public:
    // The block of `buffer` must be zero-filled and have its final size.
    explicit BufferReader(AttrData&& buffer) noexcept : data_(std::move(buffer)) {}

    void take(std::string_view characters) override;

    struct Result {
        AttrData data;
        ElementsRead elements;
    };
    // The value and how it was read. Call once, after the last piece.
    [[nodiscard]] Result finish();

private:
    [[nodiscard]] bool isPayload(char first) const noexcept;
    void startNumbers();

    AttrData data_;
    std::optional<NumberFiller> numbers_;
    std::optional<PayloadDecoder> payload_;
};

} // namespace vor::velmo_sdk::impl

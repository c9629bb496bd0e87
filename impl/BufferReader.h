// Builds the value of a buffer from its list of elements while the list is scanned.
#pragma once

#include "impl/BufferText.h"
#include "impl/lexer/ElementSink.h"
#include "impl/numbers/NumberFiller.h"
#include "scene/AttrData.h"
#include "scene/core/Decompress.h"

namespace vor::velmo_sdk::impl {

// If the elements are bytes, a list that begins with a `.` is a compressed payload.
class BufferReader final : public ElementSink {
public:
    // The block of `buffer` must be zero-filled and have its final size.
    explicit BufferReader(AttrData&& buffer) noexcept : data_(std::move(buffer)) {}

    void take(std::string_view characters) override;

    // Call after the last piece.
    void finish();

    // The outcome: valid after finish(), also once the data has been taken.
    [[nodiscard]] ElementsRead elementsRead() const;

    [[nodiscard]] AttrData takeData() noexcept { return std::move(data_); }

private:
    [[nodiscard]] bool isPayload(char first) const noexcept;
    void startNumbers();

    AttrData data_;
    std::unique_ptr<NumberFiller> numbers_;
    std::unique_ptr<PayloadDecoder> payload_;
    String payloadError_;
};

} // namespace vor::velmo_sdk::impl

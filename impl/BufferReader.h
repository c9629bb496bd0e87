// The value of a buffer, made from the list of its numbers while that is scanned.
#pragma once

#include "impl/BufferText.h"
#include "impl/lexer/ElementSink.h"
#include "impl/numbers/NumberFiller.h"
#include "scene/AttrData.h"
#include "scene/core/Decompress.h"

namespace vor::velmo_sdk::impl {

// A list whose first element begins with a `.` is a compressed payload if the elements are bytes.
class BufferReader final : public ElementSink {
public:
    // `buffer` has its block, zero-filled and of its final size.
    explicit BufferReader(AttrData buffer) noexcept : data_(std::move(buffer)) {}

    void take(std::string_view characters) override;

    // To be called after the last piece.
    void finish();

    // How that went, after finish(); takeData() does not change it.
    [[nodiscard]] ElementsRead elementsRead() const;

    [[nodiscard]] AttrData takeData() noexcept { return std::move(data_); }

private:
    [[nodiscard]] bool isPayload(char first) const noexcept;
    void startNumbers();
    void takePayload(std::string_view characters);

    AttrData data_;
    std::unique_ptr<NumberFiller> numbers_;
    std::unique_ptr<PayloadDecoder> payload_;
    String payloadError_;
};

} // namespace vor::velmo_sdk::impl

// The value of a buffer, made from the list of its numbers while that is scanned.
#pragma once

#include "impl/lexer/ElementSink.h"
#include "impl/numbers/NumberFiller.h"
#include "scene/AttrData.h"
#include "scene/core/Decompress.h"

namespace vor::velmo_sdk::impl {

// A list whose first element begins with a `.` is a compressed payload if the elements are bytes.
class BufferReader final : public ElementSink {
public:
    // Gives the value its block, zero-filled and of its final size; throws std::bad_alloc when there is no
    // memory for it.
    BufferReader(DataType type, u64 count) : data_(AttrData::buffer(type, count)) {}

    void take(std::string_view characters) override;

    // To be called behind the last piece.
    void finish();

    // The value, to be taken over; what the functions below say stays.
    [[nodiscard]] AttrData takeData() noexcept { return std::move(data_); }

    // What a payload suffers from; empty if nothing.
    [[nodiscard]] const String& payloadError() const noexcept { return payloadError_; }

    // How the numbers went; null for a payload, an empty list, and a buffer without bytes.
    [[nodiscard]] const NumberFiller* numbers() const noexcept { return numbers_.get(); }
    [[nodiscard]] bool isPayload() const noexcept { return payload_ != nullptr; }

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

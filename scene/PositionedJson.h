// Reads JSON into a tree of values with their positions in the text.
#pragma once

#include "scene/core/Types.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

struct JsonValue {
    enum class Kind { Null, Bool, Int, UInt, Real, String, Array, Object };

    Kind kind = Kind::Null;
    std::size_t offset = 0; // of the last byte of the value; for an object or array, of the first
    bool boolean = false;
    i64 integer = 0;         // of an Int: an integer in the range of i64
    u64 unsignedInteger = 0; // of a UInt: a larger integer in the range of u64
    double real = 0;         // of any number
    std::string text{};      // of a String
    std::string key{};       // of a member
    std::size_t keyOffset = 0;
    std::vector<JsonValue> items{}; // of an Array or Object

    [[nodiscard]] bool isNumber() const noexcept {
        return kind == Kind::Int || kind == Kind::UInt || kind == Kind::Real;
    }
};

class JsonError : public std::runtime_error {
public:
    JsonError(const std::string& text, std::size_t offset) : std::runtime_error(text), offset_(offset) {}
    [[nodiscard]] std::size_t offset() const noexcept { return offset_; }

private:
    std::size_t offset_;
};

// Reads a text that is one JSON value (RFC 8259). Throws JsonError for malformed JSON, values nested more than 64 deep
// and text that is not UTF-8.
[[nodiscard]] JsonValue readJson(std::string_view text);

} // namespace vor::velmo_sdk::impl

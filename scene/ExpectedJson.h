// The values that a JSON text is expected to have. Each function throws JsonError, at the value, if it is another one.
#pragma once

#include "scene/PositionedJson.h"
#include "scene/core/String.h"

#include <string>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

[[noreturn]] void failAt(const JsonValue& value, const std::string& text);
[[noreturn]] void failAtKey(const JsonValue& member, const std::string& text);
[[noreturn]] void failUnknownKey(const JsonValue& member, const char* expected);

// The text between quotation marks, escaped, for errors.
[[nodiscard]] std::string inQuotes(std::string_view text);

// `what` completes the error "expected ...".
void expect(const JsonValue& value, JsonValue::Kind kind, const char* what);
[[nodiscard]] bool flagOf(const JsonValue& value);
[[nodiscard]] String textOf(const JsonValue& value, const char* what);
[[nodiscard]] StringVector textsOf(const JsonValue& value, const char* what);

// A JSON number, or one of the strings "inf", "-inf" and "nan".
[[nodiscard]] double realOf(const JsonValue& value);

// The members of an object, whose names must be unique, not empty and free of NUL characters.
[[nodiscard]] const std::vector<JsonValue>& membersOf(const JsonValue& value, const char* what);

} // namespace vor::velmo_sdk::impl

// Writes JSON, value by value, to a RapidJSON output stream: a class with a type `Ch` and the functions Put(char) and
// Flush().
//
//     JsonText json;
//     json.object([&] {
//         json.key("name").text(name);
//         json.key("position").object([&] { json.key("line").number(1); });
//     });
//     print(json.view());
#pragma once

#include "scene/RapidJson.h"

#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"
#include "scene/core/TextSink.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <rapidjson/prettywriter.h>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vor::velmo_sdk::impl {

// Output streams: into memory, and to a sink in blocks of about 64 KiB.
class JsonBuffer {
public:
    using Ch = char;
    void Put(char c) { text_ += c; }
    void Flush() {}
    [[nodiscard]] std::string_view view() const noexcept { return text_; }

private:
    std::string text_;
};

class JsonBlocks : public TextBlock {
public:
    using Ch = char;
    using TextBlock::TextBlock;
    void Put(char c) { append(c); }
    void Flush() { flush(); }
};

} // namespace vor::velmo_sdk::impl

namespace rapidjson {

// Indents a line, by at most 64 spaces: otherwise the output would be quadratic in the nesting depth.
template <> inline void PutN(vor::velmo_sdk::impl::JsonBlocks& stream, char c, std::size_t count) {
    stream.append(std::min<std::size_t>(count, 64), c);
}

} // namespace rapidjson

namespace vor::velmo_sdk::impl {

// The layouts: one line without spaces, or one value per line, indented by two spaces per level.
template <class Stream>
using CompactJson = rapidjson::Writer<Stream, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator>;
template <class Stream>
using IndentedJson = rapidjson::PrettyWriter<Stream, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator>;

template <class Stream, template <class> class Layout = CompactJson> class JsonWriter {
public:
    template <class... Arguments>
    explicit JsonWriter(Arguments&&... arguments) : stream_(std::forward<Arguments>(arguments)...) {
        if constexpr (isIndented)
            writer_.SetIndent(' ', 2);
    }
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    [[nodiscard]] Stream& stream() noexcept { return stream_; }
    [[nodiscard]] const Stream& stream() const noexcept { return stream_; }

    // Keys and strings may contain any bytes. They are written as UTF-8, with U+FFFD for each byte outside a
    // well-formed sequence, and with every control character escaped, so that they are safe to print on a terminal.
    JsonWriter& key(std::string_view name) {
        text(name);
        return *this;
    }
    void text(std::string_view text) {
        if (!isUtf8(text))
            return this->text(toUtf8(text).view());
        const auto mayBeControl = [](char c) { return c == '\x7F' || c == '\xC2'; }; // RapidJSON escapes the others
        if (std::ranges::none_of(text, mayBeControl)) {
            writer_.String(text.empty() ? "" : text.data(), text.size());
            return;
        }
        const std::string quoted = quoteForJson(text);
        writer_.RawValue(quoted.data(), quoted.size(), rapidjson::kStringType);
    }
    void null() { writer_.Null(); }
    void boolean(bool value) { writer_.Bool(value); }
    void integer(u64 value) { writer_.Uint64(value); }

    // The shortest text that reads back as the same value of that type. JSON has no infinities and NaN: they are the
    // strings "inf", "-inf" and "nan".
    template <std::floating_point Real> void real(Real value) {
        char buffer[realTextCapacity];
        const std::string_view digits = writeReal(value, buffer);
        if (std::isfinite(value))
            decimal(digits);
        else
            writer_.String(digits.data(), digits.size());
    }
    template <class Number> void number(Number value) {
        if constexpr (std::is_floating_point_v<Number>)
            real(value);
        else if constexpr (std::is_signed_v<Number>)
            writer_.Int64(value);
        else
            integer(value);
    }
    // A number that is already formatted.
    void decimal(std::string_view digits) { writer_.RawValue(digits.data(), digits.size(), rapidjson::kNumberType); }

    // `members` writes keys and their values, `items` values.
    template <class Members> void object(Members members) {
        beginObject();
        members();
        endObject();
    }
    template <class Items> void array(Items items) {
        beginArray();
        items();
        endArray();
    }
    // An array on one line in either layout.
    template <class Items> void row(Items items) {
        setOneLineArrays(true);
        array(items);
        setOneLineArrays(false);
    }
    template <class Number> void numbers(std::span<const Number> values) {
        row([&] {
            for (const Number value : values)
                number(value);
        });
    }
    void reals(std::span<const double> values) { numbers(values); }
    void integers(std::span<const u32> values) { numbers(values); }

    void beginObject() { writer_.StartObject(); }
    void endObject() { writer_.EndObject(); }
    void beginArray() { writer_.StartArray(); }
    void endArray() { writer_.EndArray(); }

    // A value that is already JSON, which is copied.
    // cppcheck-suppress invalidLifetime; nothing keeps the pointer
    void raw(std::string_view json) { writer_.RawValue(json.data(), json.size(), rapidjson::kObjectType); }

private:
    static constexpr bool isIndented = requires(Layout<Stream> writer) { writer.SetIndent(' ', 2); };

    void setOneLineArrays([[maybe_unused]] bool isOneLine) {
        if constexpr (isIndented)
            writer_.SetFormatOptions(isOneLine ? rapidjson::kFormatSingleLineArray : rapidjson::kFormatDefault);
    }

    Stream stream_;
    Layout<Stream> writer_{stream_};
};

// JSON in memory.
class JsonText : public JsonWriter<JsonBuffer> {
public:
    [[nodiscard]] std::string_view view() const noexcept { return stream().view(); }
};

} // namespace vor::velmo_sdk::impl

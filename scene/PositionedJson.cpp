#include "scene/PositionedJson.h"

#include "scene/RapidJson.h"
#include "scene/core/String.h"

#include <cmath>
#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace vor::velmo_sdk::impl {

namespace {

constexpr std::size_t maxDepth = 64;

using Stream = rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream>;

// Builds the tree from the events of the parser. `open_` holds the containers that are not closed yet.
class TreeBuilder {
public:
    explicit TreeBuilder(const Stream& stream) : stream_(stream) {}

    [[nodiscard]] JsonValue takeRoot() { return std::move(root_); }

    // Whether parsing stopped at a number beyond the range of a double.
    [[nodiscard]] bool isStoppedByNumber() const noexcept { return isTooLarge_; }

    bool Null() { return add({}); }
    bool Bool(bool value) { return add({.kind = JsonValue::Kind::Bool, .boolean = value}); }
    // Receives numbers as text, because RapidJSON's exact conversion to a double reads beyond its tables for some of
    // them. (It still checks their magnitude, and rejects some that have hundreds of zeros.)
    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        JsonValue value;
        const std::string_view number(text, length);
        isTooLarge_ = !vor::String::parse(number, value.real) || std::isinf(value.real);
        const bool isWhole = number.find_first_of(".eE") == std::string_view::npos;
        if (isWhole && vor::String::parse(number, value.integer))
            value.kind = JsonValue::Kind::Int;
        else if (isWhole && vor::String::parse(number, value.unsignedInteger))
            value.kind = JsonValue::Kind::UInt;
        else
            value.kind = JsonValue::Kind::Real;
        return !isTooLarge_ && add(std::move(value));
    }
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        return add({.kind = JsonValue::Kind::String, .text = std::string(text, length)});
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        key_.assign(text, length);
        keyOffset_ = lastOffset();
        return true;
    }
    bool StartObject() { return open(JsonValue::Kind::Object); }
    bool StartArray() { return open(JsonValue::Kind::Array); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

private:
    [[nodiscard]] std::size_t lastOffset() const { return stream_.Tell() == 0 ? 0 : stream_.Tell() - 1; }

    bool add(JsonValue value) { return add(std::move(value), lastOffset()); }

    bool add(JsonValue value, std::size_t offset) {
        value.offset = offset;
        value.key = std::move(key_);
        value.keyOffset = keyOffset_;
        (open_.empty() ? root_ : open_.back()->items.emplace_back()) = std::move(value);
        return true;
    }

    // The pointer to an open container stays valid, because its parent gets no other item before it is closed.
    bool open(JsonValue::Kind kind) {
        if (open_.size() == maxDepth)
            return false;
        add({.kind = kind}, stream_.Tell()); // this event precedes the consumption of the bracket
        open_.push_back(open_.empty() ? &root_ : &open_.back()->items.back());
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    const Stream& stream_;
    JsonValue root_;
    std::vector<JsonValue*> open_;
    std::string key_;
    std::size_t keyOffset_ = 0;
    bool isTooLarge_ = false;
};

// What the parser expected at the position of the error.
const char* expectation(rapidjson::ParseErrorCode code) {
    switch (code) {
    case rapidjson::kParseErrorDocumentEmpty:
        return "expected a JSON value, found nothing";
    case rapidjson::kParseErrorDocumentRootNotSingular:
        return "expected the end of the file after the JSON value";
    case rapidjson::kParseErrorObjectMissName:
        return "expected a key between double quotes";
    case rapidjson::kParseErrorObjectMissColon:
        return "expected ':' after the key";
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
        return "expected ',' or '}'";
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
        return "expected ',' or ']'";
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
    case rapidjson::kParseErrorStringUnicodeSurrogateInvalid:
    case rapidjson::kParseErrorStringEscapeInvalid:
        return "expected a valid escape in the string";
    case rapidjson::kParseErrorStringMissQuotationMark:
        return "expected the string to end";
    case rapidjson::kParseErrorStringInvalidEncoding:
        return "expected UTF-8";
    case rapidjson::kParseErrorNumberTooBig:
        return "expected a number that a double can hold";
    case rapidjson::kParseErrorNumberMissFraction:
    case rapidjson::kParseErrorNumberMissExponent:
        return "expected a digit";
    case rapidjson::kParseErrorTermination:
        return "expected values nested at most 64 deep";
    default:
        return "expected a JSON value";
    }
}

} // namespace

JsonValue readJson(std::string_view text) {
    constexpr unsigned flags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseValidateEncodingFlag;
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos)
        throw JsonError("expected no NUL byte", nul); // RapidJSON would interpret it as the end
    rapidjson::MemoryStream memory(text.data(), text.size());
    Stream stream(memory);
    TreeBuilder builder(stream);
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator> reader;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, builder);
    if (builder.isStoppedByNumber())
        throw JsonError(expectation(rapidjson::kParseErrorNumberTooBig), result.Offset());
    if (!result)
        throw JsonError(expectation(result.Code()), result.Offset());
    return builder.takeRoot();
}

} // namespace vor::velmo_sdk::impl

#include "scene/VrnValue.h"

#include "scene/VrnWriter.h"
#include "scene/core/Compress.h"
#include "scene/core/NumberLists.h"
#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <optional>

namespace vor::velmo_sdk::impl {

namespace {

bool isLiteral(std::string_view name) noexcept {
    const auto isWord = [&](std::string_view word) {
        return std::ranges::equal(name, word, {}, [](char c) { return String::lower(c); });
    };
    return isWord("true") || isWord("false") || isWord("null");
}

void appendKeyword(std::string_view typeName, std::string& text) {
    std::ranges::transform(typeName, std::back_inserter(text), [](char c) { return String::lower(c); });
}

// As a token that is a Real: it begins with a digit or a minus and has a point.
void appendReal(double value, std::string& text) {
    char buffer[realTextCapacity];
    if (std::isnan(value)) {
        text += "-nan";
    } else if (std::isinf(value)) {
        text += value < 0 ? "-inf" : "1.0e999";
    } else {
        const std::string_view number = writeReal(value, buffer);
        const std::size_t exponent = std::min(number.find('e'), number.size());
        const bool hasPoint = number.find('.') != std::string_view::npos;
        text.append(number.substr(0, exponent)).append(hasPoint ? "" : ".0").append(number.substr(exponent));
    }
}

void appendComponents(const AttrData& value, std::string& text) {
    const std::span<const double> components = value.components();
    char numbers[16 * listNumberCapacity + listSlack];
    u32 ends[16];
    const char* end = writeNumberList(components, numbers, ends);
    appendKeyword(attrTypeName(value.type()), text);
    text.append("(").append(numbers, static_cast<std::size_t>(end - numbers) - 1).append(")");
}

// A character that the text cannot hold as it is: a control character, a quote, or no character at all.
void appendEscaped(char c, std::string& text) {
    constexpr char digits[] = "0123456789ABCDEF";
    switch (c) {
    case '"':
    case '\\':
        text.append(1, '\\').append(1, c);
        return;
    case '\n':
        text += "\\n";
        return;
    case '\t':
        text += "\\t";
        return;
    case '\r':
        text += "\\r";
        return;
    default:
        text.append("\\x").append(1, digits[static_cast<u8>(c) >> 4]).append(1, digits[static_cast<u8>(c) & 15]);
    }
}

void appendQuoted(std::string_view string, std::string& text) {
    text += '"';
    while (!string.empty()) {
        const auto isPlain = [](char c) { return String::isPrintable(c) && c != '"' && c != '\\'; };
        const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(string, isPlain) - string.begin());
        text += string.substr(0, plain);
        string.remove_prefix(plain);
        if (string.empty())
            break;
        const std::size_t length = static_cast<u8>(string[0]) < 0x80 ? 0 : utf8Length(string);
        if (length == 0)
            appendEscaped(string[0], text);
        else
            text += string.substr(0, length);
        string.remove_prefix(std::max<std::size_t>(length, 1));
    }
    text += '"';
}

// Calls `use` with the flat list of a buffer's numbers.
template <class Use> void withNumbers(const AttrData& buffer, Use use) {
    switch (elementLayout(buffer.dataType()).componentType) {
    case DataType::Char:
        return use(buffer.elements<i8>());
    case DataType::Byte:
        return use(buffer.elements<u8>());
    case DataType::Int16:
        return use(buffer.elements<i16>());
    case DataType::UInt16:
        return use(buffer.elements<u16>());
    case DataType::Int32:
        return use(buffer.elements<i32>());
    case DataType::UInt32:
        return use(buffer.elements<u32>());
    case DataType::Int64:
        return use(buffer.elements<i64>());
    case DataType::UInt64:
        return use(buffer.elements<u64>());
    case DataType::Float:
        return use(buffer.elements<float>());
    case DataType::Double:
        return use(buffer.elements<double>());
    default:
        return;
    }
}

template <class Real, class Bits> bool isForeignNaN(Real number) noexcept {
    constexpr Bits quiet = std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN());
    constexpr Bits sign = Bits(1) << (sizeof(Bits) * 8 - 1);
    return std::isnan(number) && (std::bit_cast<Bits>(number) & ~sign) != quiet;
}

// The lines of a list: all in the one that it begins in, or each in lines of its own.
class Lines {
public:
    Lines(TextBlock& text, const VrnWriterOptions& options, LinePlace place, std::size_t length)
        : text_(text), indent_(place.indent + 4) {
        constexpr std::size_t closing = 2; // the brace and the semicolon
        isOneLine_ = options.column == 0 || place.prefix + length + closing <= options.column;
        column_ = isOneLine_ ? std::numeric_limits<std::size_t>::max() / 2 : options.column;
        used_ = isOneLine_ ? 0 : column_;
        isBegun_ = !isOneLine_; // by what comes before the list, and there is no room left
    }

    // Numbers with a space behind each; `ends` are theirs, `each` of them are one element.
    void append(const char* numbers, std::span<const u32> ends, std::size_t each) {
        const std::size_t elements = ends.size() / each;
        const auto endOf = [&](std::size_t element) { return ends[element * each + each - 1]; };
        std::size_t begun = 0; // of what has not been written yet
        for (std::size_t next = 0; next < elements;) {
            std::size_t behind = firstBeyond(begun + column_ - std::min(column_, used_) + 1, next, elements, endOf);
            if (behind == next && isBegun_) {
                startLine();
                continue;
            }
            behind = std::max(behind, next + 1); // one that is longer than a line, too
            write({numbers + begun, numbers + endOf(behind - 1)});
            begun = endOf(behind - 1);
            next = behind;
        }
    }

    // A `.`, then digits that belong together in pairs.
    void append(std::string_view payload) {
        const std::size_t pairs = std::max<std::size_t>(column_ - std::min(column_, indent_ + 1), 2) / 2 * 2;
        for (std::size_t length = pairs + 1; !payload.empty(); length = pairs) {
            if (!isOneLine_)
                startLine();
            text_.append(payload.substr(0, length));
            payload.remove_prefix(std::min(length, payload.size()));
        }
    }

    void finish() {
        if (isOneLine_)
            return;
        text_.append('\n');
        text_.append(indent_ - 4, ' ');
    }

private:
    // The first element from `next` on that ends behind a place. Each takes two characters at least.
    template <class EndOf>
    static std::size_t firstBeyond(std::size_t place, std::size_t next, std::size_t elements, EndOf endOf) {
        const std::size_t begun = next == 0 ? 0 : endOf(next - 1);
        std::size_t left = std::min(elements - next, (place - begun) / 2 + 1);
        while (left != 0) {
            const std::size_t half = left / 2;
            const bool isWithin = endOf(next + half) <= place;
            next = isWithin ? next + half + 1 : next;
            left = isWithin ? left - half - 1 : half;
        }
        return next;
    }

    void startLine() {
        text_.append('\n');
        text_.append(indent_, ' ');
        used_ = indent_;
        isBegun_ = false;
    }
    void write(std::string_view numbers) {
        if (isBegun_)
            text_.append(' ');
        text_.append(numbers.substr(0, numbers.size() - 1));
        isBegun_ = true;
        used_ += numbers.size();
    }

    TextBlock& text_;
    std::size_t indent_;
    std::size_t column_;
    std::size_t used_; // of the line, with a space behind the last number
    bool isOneLine_;
    bool isBegun_; // the line has numbers
};

// How many numbers are made text at once: what a processor keeps near.
constexpr std::size_t atOnce = 1024;

// All numbers, `each` of them an element.
template <class Number>
void appendNumbers(std::span<const Number> numbers, std::size_t each, const VrnWriterOptions& options, LinePlace place,
                   TextBlock& text) {
    const auto characters = std::make_unique_for_overwrite<char[]>(atOnce * listNumberCapacity + listSlack);
    u32 ends[atOnce];
    std::optional<Lines> lines;
    while (!numbers.empty()) {
        const auto next = numbers.subspan(0, std::min(atOnce / each * each, numbers.size()));
        writeNumberList(next, characters.get(), ends);
        if (!lines) // more than these is too much for a line
            lines.emplace(text, options, place,
                          next.size() == numbers.size() ? ends[next.size() - 1] - 1 : std::size_t(options.column));
        lines->append(characters.get(), {ends, next.size()}, each);
        numbers = numbers.subspan(next.size());
    }
    lines->finish();
}

void appendPayload(std::span<const std::byte> bytes, const VrnWriterOptions& options, LinePlace place,
                   TextBlock& text) {
    const std::string payload = compress(bytes);
    Lines lines(text, options, place, payload.size());
    lines.append(payload);
    lines.finish();
}

} // namespace

bool isIdentifier(std::string_view name) noexcept {
    const auto isPart = [](char c) { return String::isLetter(c) || String::isDigit(c) || c == '_'; };
    return !name.empty() && !String::isDigit(name[0]) && std::ranges::all_of(name, isPart) && !isLiteral(name);
}

void appendLiteral(const AttrData& value, std::string& text) {
    switch (value.type()) {
    case AttrType::Bool:
        text += value.asBool() ? "true" : "false";
        return;
    case AttrType::Int:
        text += std::to_string(value.asInt());
        return;
    case AttrType::UInt: // read as a signed number, so that those above are the negative ones of the same bits
        text += std::to_string(static_cast<i64>(value.asUInt()));
        text += 'u';
        return;
    case AttrType::Real:
        return appendReal(value.asReal(), text);
    case AttrType::String:
        return appendQuoted(value.asString(), text);
    case AttrType::Object:
        text += "{}";
        return;
    case AttrType::Array:
        text += "[]";
        return;
    case AttrType::Null:
    case AttrType::Node:
    case AttrType::Buffer:
        text += "null";
        return;
    default:
        return appendComponents(value, text);
    }
}

void appendBuffer(const AttrData& buffer, const VrnWriterOptions& options, LinePlace place, TextBlock& text) {
    std::string head;
    appendKeyword(dataTypeName(buffer.dataType()), head);
    head.append("[").append(std::to_string(buffer.count())).append("] {");
    text.append(head);
    place.prefix += head.size();
    const ElementLayout layout = elementLayout(buffer.dataType());
    if (layout.isCompressible() && buffer.bytes().size() > options.compressAbove)
        appendPayload(buffer.bytes(), options, place, text);
    else if (buffer.count() != 0)
        withNumbers(buffer, [&](auto numbers) { appendNumbers(numbers, layout.components, options, place, text); });
    text.append('}');
}

bool hasForeignNaN(const AttrData& value) noexcept {
    if (value.type() == AttrType::Real)
        return isForeignNaN<double, u64>(value.asReal()) ||
               (std::isnan(value.asReal()) && !std::signbit(value.asReal()));
    return std::ranges::any_of(value.components(), isForeignNaN<double, u64>) ||
           std::ranges::any_of(value.elements<float>(), isForeignNaN<float, u32>) ||
           std::ranges::any_of(value.elements<double>(), isForeignNaN<double, u64>);
}

} // namespace vor::velmo_sdk::impl

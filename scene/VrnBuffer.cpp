#include "scene/VrnBuffer.h"

#include "scene/BufferNumbers.h"
#include "scene/core/Compress.h"
#include "scene/core/ListElements.h"
#include "scene/core/NumberLists.h"

#include <algorithm>
#include <memory>

namespace vor::velmo_sdk::impl {

namespace {

static_assert(listSlack >= TextBlock::slack);

// Numbers formatted per chunk; the text of a chunk fits the L1 or L2 cache.
constexpr std::size_t chunkSize = 1024;

// Writes a list: on the line of its statement if it fits, otherwise wrapped onto lines of its own.
class Lines {
public:
    Lines(TextBlock& text, const VrnWriterOptions& options, LinePlace place, std::size_t length)
        : text_(text), indent_(place.indent + 4), newLine_('\n' + std::string(indent_ + TextBlock::slack, ' ')),
          column_(options.column) {
        constexpr std::size_t closing = 2; // the brace and the semicolon
        isOneLine_ = options.column == 0 || place.prefix + length + closing <= options.column;
        used_ = column_;
        isBegun_ = !isOneLine_; // with the statement, which leaves no space
    }

    // Appends whole elements of `each` numbers, each number followed by a space.
    void append(std::string_view numbers, std::size_t each) {
        if (isOneLine_)
            return write(numbers);
        while (!numbers.empty()) {
            std::size_t fitting = lengthOfElements(numbers, spaceLeft(), each);
            if (fitting == 0 && isBegun_) {
                startLine();
                fitting = lengthOfElements(numbers, spaceLeft(), each);
            }
            if (fitting == 0) // the element is longer than a line
                fitting = lengthOfElement(numbers, each);
            write(numbers.substr(0, fitting));
            numbers.remove_prefix(fitting);
            if (!numbers.empty()) // the next element does not fit
                startLine();
        }
    }

    // Appends a payload: a `.`, then pairs of hexadecimal digits, which are not split.
    void append(std::string_view payload) {
        if (isOneLine_)
            return text_.append(payload);
        const std::size_t pairs = std::max<std::size_t>(column_ - std::min(column_, indent_ + 1), 2) / 2 * 2;
        for (std::size_t length = pairs + 1; !payload.empty(); length = pairs) {
            startLine();
            text_.append(payload.substr(0, length));
            payload.remove_prefix(std::min(length, payload.size()));
        }
    }

    void finish() {
        if (isOneLine_)
            return;
        text_.append(std::string_view(newLine_).substr(0, 1 + indent_ - 4));
    }

private:
    // The space left on the line, plus one because the last number's trailing space is not written.
    [[nodiscard]] std::size_t spaceLeft() const { return column_ - std::min(column_, used_) + 1; }

    void startLine() {
        text_.appendLoose(std::string_view(newLine_).substr(0, 1 + indent_));
        used_ = indent_;
        isBegun_ = false;
    }
    void write(std::string_view numbers) {
        if (isBegun_)
            text_.append(' ');
        text_.appendLoose(numbers.substr(0, numbers.size() - 1));
        isBegun_ = true;
        used_ += numbers.size();
    }

    TextBlock& text_;
    std::size_t indent_;
    std::string newLine_; // a line feed, the indentation, and the slack that appendLoose() may read
    std::size_t column_;
    std::size_t used_; // characters of the line, including a space after the last number
    bool isOneLine_;
    bool isBegun_; // the line has numbers
};

// The numbers of a list that are formatted together: whole elements.
std::size_t chunkOf(std::size_t count, std::size_t each) { return std::min(chunkSize / each * each, count); }

// The length of a list without its last space, or any length beyond `column`.
template <class Number>
std::size_t lengthOfList(std::span<const Number> numbers, std::size_t each, std::size_t column, char* characters) {
    const std::size_t least = 2 * numbers.size() - 1; // a digit and a space for each
    std::size_t length = least > column ? least : 0;
    while (length <= column && !numbers.empty()) {
        const auto next = numbers.first(chunkOf(numbers.size(), each));
        length += static_cast<std::size_t>(writeNumberList(next, characters) - characters);
        numbers = numbers.subspan(next.size());
    }
    return length - (numbers.empty() ? 1 : 0);
}

// Appends all numbers, `each` per element.
template <class Number>
void appendNumbers(std::span<const Number> numbers, std::size_t each, const VrnWriterOptions& options, LinePlace place,
                   TextBlock& text) {
    const auto block =
        std::make_unique_for_overwrite<char[]>(elementsSlack + chunkSize * listNumberCapacity + listSlack);
    char* const characters = block.get() + elementsSlack;
    const auto write = [&](std::span<const Number> some) {
        return std::string_view{characters, writeNumberList(some, characters)};
    };
    if (chunkOf(numbers.size(), each) == numbers.size()) {
        const std::string_view list = write(numbers);
        Lines lines(text, options, place, list.size() - 1);
        lines.append(list, each);
        return lines.finish();
    }
    Lines lines(text, options, place, lengthOfList(numbers, each, options.column, characters));
    while (!numbers.empty()) {
        const auto next = numbers.first(chunkOf(numbers.size(), each));
        lines.append(write(next), each);
        numbers = numbers.subspan(next.size());
    }
    lines.finish();
}

void appendPayload(std::span<const std::byte> bytes, const VrnWriterOptions& options, LinePlace place,
                   TextBlock& text) {
    const std::string payload = compress(bytes);
    Lines lines(text, options, place, payload.size());
    lines.append(payload);
    lines.finish();
}

} // namespace

void appendBuffer(const AttrData& buffer, const VrnWriterOptions& options, LinePlace place, TextBlock& text) {
    const String keyword = String(dataTypeName(buffer.dataType())).toLower();
    const u64 count = options.hasElements ? buffer.count() : 0;
    const String head = String::format("%s[%llu] {", keyword.buf(), static_cast<unsigned long long>(count));
    text.append(head.view());
    place.prefix += head.len();
    if (count == 0)
        return text.append('}');
    const ElementLayout layout = elementLayout(buffer.dataType());
    if (layout.isCompressible() && buffer.bytes().size() > options.compressAbove)
        appendPayload(buffer.bytes(), options, place, text);
    else
        visitNumbers(buffer, [&]<class Number>(std::span<const Number> numbers) {
            if constexpr (!std::is_same_v<Number, bool>) // Bool has no keyword
                appendNumbers(numbers, layout.components, options, place, text);
        });
    text.append('}');
}

void appendWrappedComponents(const AttrData& value, const VrnWriterOptions& options, LinePlace place, TextBlock& text) {
    const String head = String(attrTypeName(value.type())).toLower() + "(";
    text.append(head.view());
    place.prefix += head.len();
    const std::size_t row = value.type() == AttrType::Mat3 ? 3 : value.type() == AttrType::Mat4 ? 4 : 1;
    appendNumbers(value.components(), row, options, place, text);
    text.append(')');
}

} // namespace vor::velmo_sdk::impl

#include "scene/VrnBuffer.h"

#include "scene/BufferNumbers.h"
#include "scene/core/Compress.h"
#include "scene/core/NumberLists.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

namespace vor::velmo_sdk::impl {

namespace {

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

void appendBuffer(const AttrData& buffer, const VrnWriterOptions& options, LinePlace place, TextBlock& text) {
    const String keyword = String(dataTypeName(buffer.dataType())).toLower();
    const String head = String::format("%s[%llu] {", keyword.buf(), static_cast<unsigned long long>(buffer.count()));
    text.append(head.view());
    place.prefix += head.len();
    const ElementLayout layout = elementLayout(buffer.dataType());
    if (layout.isCompressible() && buffer.bytes().size() > options.compressAbove)
        appendPayload(buffer.bytes(), options, place, text);
    else if (buffer.count() != 0)
        visitNumbers(buffer, [&]<class Number>(std::span<const Number> numbers) {
            if constexpr (!std::is_same_v<Number, bool>) // which no keyword names
                appendNumbers(numbers, layout.components, options, place, text);
        });
    text.append('}');
}

} // namespace vor::velmo_sdk::impl

#include "impl/BufferReader.h"

#include "impl/Component.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <utility>

namespace vor::velmo_sdk::impl {

void BufferReader::take(std::string_view characters) {
    if (std::as_const(data_).bytes().empty())
        return;
    if (!numbers_ && !payload_) {
        const auto first = std::ranges::find_if(characters, [](char c) { return isIn(c, numberChar); });
        if (first == characters.end())
            return;
        characters.remove_prefix(static_cast<std::size_t>(first - characters.begin()));
        if (isPayload(characters[0])) {
            payload_.emplace([](char c) { return !isIn(c, numberChar); });
            characters.remove_prefix(1);
        } else {
            startNumbers();
        }
    }
    if (payload_)
        payload_->take(characters);
    else
        numbers_->take(characters);
}

/// numbers ::= '{' ( number ( ' ' number )* )? '}'   the components of all elements in order
/// number ::= integer | real   depending on the component type of the DataType
void BufferReader::startNumbers() {
    (void)withComponent(elementLayout(data_.dataType()).componentType, [&]<class Number>(Number) {
        numbers_ = NumberFiller::make<Number>(data_.bytes());
        return true;
    });
}

/// payload ::= '{' '.' ( hexdigit hexdigit | ' ' )* '}'   a zlib stream; only for components of one byte
bool BufferReader::isPayload(char first) const noexcept {
    return first == '.' && elementLayout(data_.dataType()).isCompressible();
}

BufferReader::Result BufferReader::finish() {
    ElementsRead elements;
    if (payload_) {
        elements.isPayload = true;
        (void)payload_->inflate(data_.bytes(), elements.payloadError);
    } else if (numbers_) {
        numbers_->finish();
        elements = {
            .filledBytes = numbers_->filledBytes(), .areReadable = numbers_->isRead(), .excess = numbers_->excess()};
    }
    return {std::move(data_), std::move(elements)};
}

} // namespace vor::velmo_sdk::impl

#include "impl/BufferText.h"

#include "impl/Component.h"
#include "scene/core/Decompress.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vor::velmo_sdk::impl {

namespace {

std::span<u8> blockOf(AttrData& buffer) {
    const std::span<std::byte> block = buffer.bytes();
    return {reinterpret_cast<u8*>(block.data()), block.size()};
}

ElementsRead readPayload(std::string_view payload, AttrData& buffer) {
    ElementsRead result{.isPayload = true};
    const std::span<u8> block = blockOf(buffer);
    const DecompressedBytes bytes =
        decompress(reinterpret_cast<const u8*>(payload.data()), payload.size(), result.payloadError, block.size());
    std::copy_n(bytes.bytes.get(), bytes.length, block.begin());
    return result;
}

ElementsRead readNumbers(std::string_view numbers, AttrData& buffer) {
    const ElementLayout layout = elementLayout(buffer.dataType());
    const std::span<u8> block = blockOf(buffer);
    ElementsRead result;
    while (!numbers.empty()) {
        const std::string_view number = numbers.substr(0, numbers.find(' '));
        numbers.remove_prefix(std::min(number.size() + 1, numbers.size()));
        if (number.empty())
            continue;
        if (result.filledBytes + layout.componentSize > block.size()) {
            result.excess = String(number);
            break;
        }
        result.areReadable &= parseElement(number, layout.componentType, block.data() + result.filledBytes);
        result.filledBytes += layout.componentSize;
    }
    return result;
}

} // namespace

ElementsRead readElements(std::string_view braces, AttrData& buffer) {
    const std::string_view elements = braces.size() > 2 ? braces.substr(1, braces.size() - 2) : std::string_view();
    if (std::as_const(buffer).bytes().empty())
        return {};
    const bool isPayload = elements.starts_with('.') && elementLayout(buffer.dataType()).isCompressible();
    return isPayload ? readPayload(elements, buffer) : readNumbers(elements, buffer);
}

bool parseElement(std::string_view text, DataType type, u8* out) {
    return withComponent(type, [&](auto number) {
        if (!String::parse(text, number))
            return false;
        std::memcpy(out, &number, sizeof number);
        return true;
    });
}

} // namespace vor::velmo_sdk::impl

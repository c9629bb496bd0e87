#include "convert/import/VertexWelding.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <string_view>

namespace vrn::convert {

// A table of the kept vertices with open addressing, at most half full.
void VertexWelding::weld() {
    constexpr u32 free = ~u32(0);
    std::vector<u32> table(std::bit_ceil(2 * count_ + 1), free);
    newIndex_.resize(count_);
    for (std::size_t vertex = 0; vertex < count_; ++vertex) {
        std::size_t slot = hash(vertex) & (table.size() - 1);
        while (table[slot] != free && !isSame(kept_[table[slot]], vertex))
            slot = (slot + 1) & (table.size() - 1);
        if (table[slot] == free) {
            table[slot] = static_cast<u32>(kept_.size());
            kept_.push_back(static_cast<u32>(vertex));
        }
        newIndex_[vertex] = table[slot];
    }
}

std::size_t VertexWelding::hash(std::size_t vertex) const {
    std::size_t combined = 0;
    for (const Attribute& attribute : attributes_) {
        const std::string_view bytes(reinterpret_cast<const char*>(attribute.bytes + vertex * attribute.size),
                                     attribute.size);
        combined = std::rotl(combined, 5) * 0x9E3779B97F4A7C15 ^ std::hash<std::string_view>()(bytes);
    }
    return combined;
}

bool VertexWelding::isSame(std::size_t a, std::size_t b) const {
    return std::ranges::all_of(attributes_, [&](const Attribute& attribute) {
        return std::memcmp(attribute.bytes + a * attribute.size, attribute.bytes + b * attribute.size,
                           attribute.size) == 0;
    });
}

} // namespace vrn::convert

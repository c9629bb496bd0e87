// Finds vertices that are the same in all their attributes, bit for bit.
//
//     VertexWelding welding(3);
//     welding.add(std::span<const Point>(points));
//     welding.weld();
//     welding.kept()      // the vertices that differ, in their order: 0 2
//     welding.newIndex()  // of each vertex among these: 0 0 1
//
// Linear time and memory.
#pragma once

#include "convert/shared/SceneNames.h"

#include <span>
#include <vector>

namespace vrn::convert {

class VertexWelding {
public:
    explicit VertexWelding(std::size_t vertices) : count_(vertices) {}

    // An attribute with a value per vertex, which must remain valid until weld() has returned.
    template <class Value> void add(std::span<const Value> values) {
        attributes_.push_back({std::as_bytes(values).data(), sizeof(Value)});
    }

    void weld();

    [[nodiscard]] const std::vector<u32>& kept() const noexcept { return kept_; }
    [[nodiscard]] const std::vector<u32>& newIndex() const noexcept { return newIndex_; }

private:
    struct Attribute {
        const std::byte* bytes;
        std::size_t size; // of a value
    };

    [[nodiscard]] std::size_t hash(std::size_t vertex) const;
    [[nodiscard]] bool isSame(std::size_t a, std::size_t b) const;

    std::size_t count_;
    std::vector<Attribute> attributes_{};
    std::vector<u32> kept_{};
    std::vector<u32> newIndex_{};
};

} // namespace vrn::convert

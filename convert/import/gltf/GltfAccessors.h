// Reads accessors: of every component type, normalised, interleaved, sparse and without a buffer view.
//
// Refuses, with the place in the file, what exceeds its buffer view, does not have the asked type, or is not finite.
#pragma once

#include "convert/import/gltf/GltfBuffers.h"

#include <vector>

namespace vrn::convert {

class GltfAccessors {
public:
    // A buffer has at most `maxBytes`.
    GltfAccessors(const GltfJson& json, GltfBuffers& buffers, u64 maxBytes)
        : json_(json), buffers_(buffers), maxBytes_(maxBytes) {}

    // `index` is the value in the file that refers to the accessor.
    [[nodiscard]] u64 countOf(const GltfValue& index) const;
    [[nodiscard]] u32 componentsOf(const GltfValue& index) const;
    [[nodiscard]] bool areMatrices2(const GltfValue& index) const; // for which scenes have no type

    // A buffer of `type`, which has float components. Normalised integers become the numbers that they stand for, other
    // integers the nearest floats.
    [[nodiscard]] AttrData floats(const GltfValue& index, DataType type);

    // Unsigned integers.
    [[nodiscard]] std::vector<u32> integers(const GltfValue& index, u32 components);

private:
    struct Layout;
    [[nodiscard]] GltfValue at(const GltfValue& index) const;
    [[nodiscard]] Layout layoutOf(const GltfValue& accessor) const;
    [[nodiscard]] std::vector<float> numbers(const GltfValue& accessor, const Layout& layout);
    void gather(const GltfValue& accessor, const Layout& layout, std::span<std::byte> to);
    void copyView(const GltfValue& accessor, const Layout& layout, std::span<std::byte> to);
    void replaceSparse(const GltfValue& accessor, const Layout& layout, std::span<std::byte> to);

    const GltfJson& json_;
    GltfBuffers& buffers_;
    u64 maxBytes_;
};

// The type of buffers for attributes without a meaning here.
[[nodiscard]] DataType floatTypeOf(u32 components);

// Colours (Rgbf) with the alpha 1.
[[nodiscard]] AttrData opaque(const AttrData& colors);

} // namespace vrn::convert

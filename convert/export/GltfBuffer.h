// The binary buffer of a glTF file, with its buffer views and accessors.
//
// Refers to the data that is added instead of copying it, so the data must stay valid until writeBytes().
#pragma once

#include "convert/model/Model.h"
#include "scene/JsonWriter.h"
#include "scene/core/OutputFile.h"

#include <deque>
#include <span>
#include <vector>

namespace vrn::convert {

using vor::velmo_sdk::impl::JsonText;

class GltfBuffer {
public:
    enum class Use { Other, Vertices, Indices };

    // Add an accessor and return its index. addOwnFloats() and addJoints() keep the data themselves.
    vor::u32 addFloats(std::span<const float> numbers, vor::u32 components, Use use, bool hasBounds = false);
    vor::u32 addOwnFloats(std::vector<float> numbers, vor::u32 components, Use use, bool hasBounds = false) {
        return addFloats(floats_.emplace_back(std::move(numbers)), components, use, hasBounds);
    }
    vor::u32 addAttribute(const NamedValues& attribute, Use use);
    vor::u32 addIndices(std::span<const vor::u32> indices);
    vor::u32 addJoints(std::vector<vor::u16> joints);

    // Adds a buffer view without an accessor and returns its index.
    vor::u32 addBytes(std::span<const std::byte> bytes, Use use = Use::Other);

    [[nodiscard]] vor::u64 size() const noexcept { return size_; }

    // Writes `accessors`, `bufferViews` and `buffers`. `uri` refers to the file of the buffer; empty in a .glb.
    void writeJson(JsonText& json, std::string_view uri) const;

    void writeBytes(vor::OutputFile& file) const;

private:
    struct View {
        std::span<const std::byte> bytes;
        vor::u64 offset;
        Use use;
    };
    struct Accessor {
        vor::u32 view;
        vor::u32 componentType;
        vor::u64 count;
        const char* type;
        std::vector<double> min;
        std::vector<double> max;
    };

    vor::u32 add(Accessor accessor);

    std::vector<View> views_;
    std::vector<Accessor> accessors_;
    std::deque<std::vector<float>> floats_;
    std::deque<std::vector<vor::u16>> joints_;
    vor::u64 size_ = 0;
};

} // namespace vrn::convert

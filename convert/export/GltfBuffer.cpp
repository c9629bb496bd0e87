#include "convert/export/GltfBuffer.h"

#include "convert/shared/SceneNames.h"

#include <algorithm>
#include <bit>

namespace vrn::convert {

static_assert(std::endian::native == std::endian::little, "glTF is little-endian, and arrays are written as bytes");

namespace {

// Component types of accessors.
constexpr u32 unsignedShort = 5123;
constexpr u32 unsignedInt = 5125;
constexpr u32 singleFloat = 5126;

const char* typeOf(u32 components) {
    return components == 1   ? "SCALAR"
           : components == 2 ? "VEC2"
           : components == 3 ? "VEC3"
           : components == 4 ? "VEC4"
           : components == 9 ? "MAT3"
                             : "MAT4";
}

// Buffer views are aligned to four bytes.
u64 padded(u64 size) { return (size + 3) / 4 * 4; }

} // namespace

u32 GltfBuffer::addFloats(std::span<const float> numbers, u32 components, Use use, bool hasBounds) {
    Accessor accessor{.view = addBytes(std::as_bytes(numbers), use),
                      .componentType = singleFloat,
                      .count = numbers.size() / components,
                      .type = typeOf(components),
                      .min = {},
                      .max = {}};
    if (hasBounds) {
        accessor.min.assign(numbers.begin(), numbers.begin() + components);
        accessor.max = accessor.min;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            const double number = static_cast<double>(numbers[i]);
            accessor.min[i % components] = std::min(accessor.min[i % components], number);
            accessor.max[i % components] = std::max(accessor.max[i % components], number);
        }
    }
    return add(std::move(accessor));
}

u32 GltfBuffer::addAttribute(const NamedValues& attribute, Use use) {
    const u32 index = addFloats(attribute.values.span(), attribute.components, use);
    if (attribute.areMatrices)
        accessors_[index].type = "MAT2";
    return index;
}

u32 GltfBuffer::addIndices(std::span<const u32> indices) {
    return add({addBytes(std::as_bytes(indices), Use::Indices), unsignedInt, indices.size(), "SCALAR", {}, {}});
}

u32 GltfBuffer::addJoints(std::vector<u16> joints) {
    const std::span<const u16> stored = joints_.emplace_back(std::move(joints));
    return add({addBytes(std::as_bytes(stored), Use::Vertices), unsignedShort, stored.size() / 4, "VEC4", {}, {}});
}

u32 GltfBuffer::addBytes(std::span<const std::byte> bytes, Use use) {
    views_.push_back({bytes, size_, use});
    size_ = padded(size_ + bytes.size());
    return static_cast<u32>(views_.size() - 1);
}

u32 GltfBuffer::add(Accessor accessor) {
    accessors_.push_back(std::move(accessor));
    return static_cast<u32>(accessors_.size() - 1);
}

void GltfBuffer::writeJson(JsonText& json, std::string_view uri) const {
    if (views_.empty())
        return;
    if (!accessors_.empty())
        json.key("accessors").array([&] {
            for (const Accessor& accessor : accessors_)
                json.object([&] {
                    json.key("bufferView").integer(accessor.view);
                    json.key("componentType").integer(accessor.componentType);
                    json.key("count").integer(accessor.count);
                    json.key("type").text(accessor.type);
                    if (accessor.min.empty())
                        return;
                    json.key("min").reals(accessor.min);
                    json.key("max").reals(accessor.max);
                });
        });
    json.key("bufferViews").array([&] {
        for (const View& view : views_)
            json.object([&] {
                json.key("buffer").integer(0);
                json.key("byteOffset").integer(view.offset);
                json.key("byteLength").integer(view.bytes.size());
                if (view.use != Use::Other)
                    json.key("target").integer(view.use == Use::Vertices ? 34962 : 34963);
            });
    });
    json.key("buffers").array([&] {
        json.object([&] {
            if (!uri.empty())
                json.key("uri").text(uri);
            json.key("byteLength").integer(size_);
        });
    });
}

void GltfBuffer::writeBytes(vor::OutputFile& file) const {
    for (const View& view : views_) {
        file.write(view.bytes);
        file.write(std::string_view("\0\0\0", padded(view.bytes.size()) - view.bytes.size()));
    }
}

} // namespace vrn::convert

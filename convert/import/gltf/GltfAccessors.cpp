#include "convert/import/gltf/GltfAccessors.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <variant>

namespace vrn::convert {

static_assert(std::endian::native == std::endian::little, "glTF is little-endian, and its bytes are copied");

namespace {

// The component types of glTF, which are constants of OpenGL.
enum class Component { Int8 = 5120, UInt8 = 5121, Int16 = 5122, UInt16 = 5123, UInt32 = 5125, Float = 5126 };

Component componentOf(const GltfValue& value) {
    const u64 number = value.required().whole();
    if (number < 5120 || number > 5126 || number == 5124)
        value.refuse("it is no component type");
    return static_cast<Component>(number);
}

// A zero of each type, in the order of their constants, one of which is not used.
using Zero = std::variant<i8, u8, i16, u16, u32, float>;
constexpr Zero zeros[] = {i8(), u8(), i16(), u16(), u32(), u32(), float()};

// Calls `visit` with a zero of the type.
auto withType(Component component, auto visit) {
    return std::visit(visit, zeros[static_cast<int>(component) - static_cast<int>(Component::Int8)]);
}

u64 sizeOf(Component component) {
    return withType(component, [](auto zero) { return u64(sizeof zero); });
}

struct Shape {
    std::string_view name;
    u32 rows;
    u32 columns;
};
constexpr Shape shapes[] = {{"SCALAR", 1, 1}, {"VEC2", 2, 1}, {"VEC3", 3, 1}, {"VEC4", 4, 1},
                            {"MAT2", 2, 2},   {"MAT3", 3, 3}, {"MAT4", 4, 4}};

const Shape& shapeOf(const GltfValue& accessor) {
    const GltfValue type = accessor["type"];
    const auto* shape = std::ranges::find(shapes, type.required().text(), &Shape::name);
    if (shape == std::end(shapes))
        type.refuse("it is no type of accessors");
    return *shape;
}

// The mapping of normalised integers to [0, 1] or [-1, 1].
template <class T> float normalized(T number) {
    return std::max(
        static_cast<float>(static_cast<double>(number) / static_cast<double>(std::numeric_limits<T>::max())), -1.F);
}

} // namespace

struct GltfAccessors::Layout {
    u64 count;
    u32 components;
    u32 columns;
    Component component;
    bool isNormalized;

    // The columns of matrices are aligned to four bytes.
    [[nodiscard]] u64 columnSize() const {
        const u64 size = components / columns * sizeOf(component);
        return columns == 1 ? size : (size + 3) / 4 * 4;
    }
    [[nodiscard]] u64 elementSize() const { return columns * columnSize(); }
    [[nodiscard]] u64 bytes() const { return count * elementSize(); }
    [[nodiscard]] u64 offsetOf(u64 number) const {
        const u64 rows = components / columns;
        return number / components * elementSize() + number % components / rows * columnSize() +
               number % rows * sizeOf(component);
    }
};

GltfValue GltfAccessors::at(const GltfValue& index) const {
    const GltfValue list = json_.root()["accessors"];
    return list[index.indexIn(list)];
}

GltfAccessors::Layout GltfAccessors::layoutOf(const GltfValue& accessor) const {
    const GltfValue count = accessor["count"];
    const Shape& shape = shapeOf(accessor);
    const Layout layout{.count = count.required().whole(),
                        .components = shape.rows * shape.columns,
                        .columns = shape.columns,
                        .component = componentOf(accessor["componentType"]),
                        .isNormalized = accessor["normalized"].boolean(false)};
    if (layout.count == 0)
        count.refuse("it is 0");
    if (layout.count > maxBytes_ / (sizeof(float) * layout.components))
        count.refuse("the elements exceed the limit of " + std::to_string(maxBytes_) + " bytes");
    return layout;
}

u64 GltfAccessors::countOf(const GltfValue& index) const { return layoutOf(at(index)).count; }

u32 GltfAccessors::componentsOf(const GltfValue& index) const {
    const Shape& shape = shapeOf(at(index));
    return shape.rows * shape.columns;
}

bool GltfAccessors::areMatrices2(const GltfValue& index) const { return shapeOf(at(index)).name == "MAT2"; }

AttrData GltfAccessors::floats(const GltfValue& index, DataType type) {
    const GltfValue accessor = at(index);
    const Layout layout = layoutOf(accessor);
    if (layout.components != elementLayout(type).components)
        accessor["type"].refuse("the accessor is used where " + std::to_string(elementLayout(type).components) +
                                " components are needed, at " + index.pointer());
    if (layout.component == Component::UInt32 && !layout.isNormalized)
        accessor["componentType"].refuse("the accessor is used where floats or small integers are needed, at " +
                                         index.pointer());
    AttrData buffer = AttrData::buffer(type, layout.count);
    if (layout.component == Component::Float)
        gather(accessor, layout, buffer.bytes());
    else
        std::ranges::copy(numbers(accessor, layout), buffer.elements<float>().begin());
    const std::span<const float> all = buffer.elements<float>();
    const auto bad = std::ranges::find_if_not(all, [](float number) { return std::isfinite(number); });
    if (bad != all.end())
        accessor.refuse("element " + std::to_string((bad - all.begin()) / layout.components) + " is not finite");
    return buffer;
}

std::vector<u32> GltfAccessors::integers(const GltfValue& index, u32 components) {
    const GltfValue accessor = at(index);
    const Layout layout = layoutOf(accessor);
    if (layout.components != components || layout.isNormalized || layout.component == Component::Float ||
        layout.component == Component::Int8 || layout.component == Component::Int16)
        accessor["componentType"].refuse("the accessor is used where " + std::to_string(components) +
                                         " unsigned integers are needed, at " + index.pointer());
    std::vector<std::byte> bytes(layout.bytes());
    gather(accessor, layout, bytes);
    return withType(layout.component, [&]<class T>(T number) {
        std::vector<u32> integers(layout.count * components);
        if constexpr (std::is_unsigned_v<T>)
            for (std::size_t i = 0; i < integers.size(); ++i) {
                std::memcpy(&number, &bytes[layout.offsetOf(i)], sizeof number);
                integers[i] = number;
            }
        return integers;
    });
}

// Integers as floats.
std::vector<float> GltfAccessors::numbers(const GltfValue& accessor, const Layout& layout) {
    std::vector<std::byte> bytes(layout.bytes());
    gather(accessor, layout, bytes);
    return withType(layout.component, [&]<class T>(T) {
        std::vector<float> numbers(layout.count * layout.components);
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            T number;
            std::memcpy(&number, &bytes[layout.offsetOf(i)], sizeof number);
            numbers[i] = layout.isNormalized ? normalized(number) : static_cast<float>(number);
        }
        return numbers;
    });
}

// Copies the elements, without gaps; `to` is zero.
void GltfAccessors::gather(const GltfValue& accessor, const Layout& layout, std::span<std::byte> to) {
    if (accessor["bufferView"].exists())
        copyView(accessor, layout, to);
    if (accessor["sparse"].exists())
        replaceSparse(accessor, layout, to);
}

void GltfAccessors::copyView(const GltfValue& accessor, const Layout& layout, std::span<std::byte> to) {
    const GltfValue index = accessor["bufferView"];
    const std::string_view view = buffers_.view(index);
    const u64 size = layout.elementSize();
    const u64 stride = buffers_.strideOf(index).value_or(size);
    const u64 offset = accessor["byteOffset"].whole();
    if (stride < size)
        index.refuse("the stride of the view, " + std::to_string(stride) + ", is smaller than an element");
    if (offset > view.size() || view.size() - offset < size ||
        (view.size() - offset - size) / stride < layout.count - 1)
        index.refuse("the accessor exceeds the view of " + std::to_string(view.size()) + " bytes");
    if (stride == size) {
        std::memcpy(to.data(), view.data() + offset, to.size());
        return;
    }
    for (u64 i = 0; i < layout.count; ++i)
        std::memcpy(to.data() + i * size, view.data() + offset + i * stride, size);
}

void GltfAccessors::replaceSparse(const GltfValue& accessor, const Layout& layout, std::span<std::byte> to) {
    const GltfValue sparse = accessor["sparse"];
    const GltfValue indices = sparse["indices"].required();
    const GltfValue values = sparse["values"].required();
    const u64 count = sparse["count"].required().whole(0, layout.count + 1);
    const Component component = componentOf(indices["componentType"]);
    const auto part = [&](const GltfValue& of, u64 size) {
        const std::string_view view = buffers_.view(of["bufferView"].required());
        const u64 offset = of["byteOffset"].whole();
        if (offset > view.size() || (view.size() - offset) / size < count)
            of["bufferView"].refuse(std::to_string(count) + " elements exceed the view of " +
                                    std::to_string(view.size()) + " bytes");
        return view.substr(offset, count * size);
    };
    const std::string_view places = part(indices, sizeOf(component));
    const std::string_view elements = part(values, layout.elementSize());
    withType(component, [&]<class T>(T place) {
        if constexpr (std::is_unsigned_v<T>) {
            u64 next = 0;
            for (u64 i = 0; i < count; ++i) {
                std::memcpy(&place, places.data() + i * sizeof place, sizeof place);
                if (place >= layout.count || place < next)
                    indices.refuse("index " + std::to_string(place) + " is out of range, or not above the one before");
                next = u64(place) + 1;
                std::memcpy(to.data() + place * layout.elementSize(), elements.data() + i * layout.elementSize(),
                            layout.elementSize());
            }
        } else {
            indices["componentType"].refuse("it is not an unsigned integer type");
        }
    });
}

DataType floatTypeOf(u32 components) {
    switch (components) {
    case 1:
        return DataType::Float;
    case 2:
        return DataType::Vec2f;
    case 3:
        return DataType::Vec3f;
    case 9:
        return DataType::Mat3f;
    case 16:
        return DataType::Mat4f;
    default:
        return DataType::Vec4f;
    }
}

AttrData opaque(const AttrData& colors) {
    AttrData result = AttrData::buffer(DataType::Rgbaf, colors.count());
    const std::span<const float> from = colors.elements<float>();
    const std::span<float> to = result.elements<float>();
    for (std::size_t i = 0; i < colors.count(); ++i) {
        std::ranges::copy(from.subspan(3 * i, 3), to.subspan(4 * i).begin());
        to[4 * i + 3] = 1;
    }
    return result;
}

} // namespace vrn::convert

// Visits the numbers of a buffer of any element type.
#pragma once

#include "scene/AttrData.h"
#include "scene/DataTypeTable.h"

namespace vor::velmo_sdk {

namespace detail {

template <class... Numbers> struct NumberVisitor {
    [[nodiscard]] static constexpr bool visits(DataType component) noexcept {
        return ((component == numberType<Numbers>) || ...);
    }
    template <class Visit> static void visit(const AttrData& buffer, Visit& use) {
        const DataType component = elementLayout(buffer.dataType()).componentType;
        (void)((component == numberType<Numbers> && visitElements<Numbers>(buffer, use)) || ...);
    }

private:
    template <class Number, class Visit> static bool visitElements(const AttrData& buffer, Visit& use) {
        use(buffer.elements<Number>());
        return true;
    }
};

using BufferNumbers = NumberVisitor<bool, i8, u8, i16, u16, i32, u32, i64, u64, float, double>;

// Every component type is visited except Ptr: addresses are meaningless outside their process.
static_assert(forAllDataTypes([](DataType type) {
    const DataType component = dataTypeRow(type).componentType;
    return component == DataType::Null || component == DataType::Ptr || BufferNumbers::visits(component);
}));

} // namespace detail

// Calls `visit(std::span<const T>)` once with all numbers of a buffer, where T is their type. Does not call it for a
// buffer of addresses or without an element type.
template <class Visit> void visitNumbers(const AttrData& buffer, Visit visit) {
    detail::BufferNumbers::visit(buffer, visit);
}

} // namespace vor::velmo_sdk

// Maps the component types of buffers to C++ types.
#pragma once

#include "scene/AttrData.h"
#include "scene/DataTypeTable.h"

namespace vor::velmo_sdk::impl {

namespace detail {

template <class... Numbers> struct ComponentTypes {
    [[nodiscard]] static constexpr bool has(DataType type) noexcept {
        return ((type == velmo_sdk::detail::numberType<Numbers>) || ...);
    }
    template <class Use> [[nodiscard]] static bool with(DataType type, Use& use) {
        return ((type == velmo_sdk::detail::numberType<Numbers> && use(Numbers())) || ...);
    }
};

using Components = ComponentTypes<i8, u8, i16, u16, i32, u32, i64, u64, float, double>;

static_assert(velmo_sdk::detail::forAllDataTypes([](DataType type) {
    const velmo_sdk::detail::DataTypeRow row = velmo_sdk::detail::dataTypeRow(type);
    return !row.hasKeyword || Components::has(row.componentType);
}));

} // namespace detail

// Returns `use(Number())` for the C++ type `Number` of a component type; false if no buffer has such components.
template <class Use> [[nodiscard]] bool withComponent(DataType type, Use use) {
    return detail::Components::with(type, use);
}

} // namespace vor::velmo_sdk::impl

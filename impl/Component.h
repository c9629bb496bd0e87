// The numbers that buffers are made of, as types of the language.
#pragma once

#include "scene/DataType.h"

namespace vor::velmo_sdk::impl {

// Calls `use(number)` with a zero of the type of a component; false if buffers have no such component.
template <class Use> [[nodiscard]] bool withComponent(DataType type, Use use) {
    switch (type) { // NOLINTNEXTLINE(bugprone-branch-clone): each branch has another type
    case DataType::Char:
        return use(i8());
    case DataType::Byte:
        return use(u8());
    case DataType::Int16:
        return use(i16());
    case DataType::UInt16:
        return use(u16());
    case DataType::Int32:
        return use(i32());
    case DataType::UInt32:
        return use(u32());
    case DataType::Int64:
        return use(i64());
    case DataType::UInt64:
        return use(u64());
    case DataType::Float:
        return use(float());
    case DataType::Double:
        return use(double());
    default:
        return false;
    }
}

} // namespace vor::velmo_sdk::impl

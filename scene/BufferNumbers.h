// The numbers of a buffer, of whatever type they are.
#pragma once

#include "scene/AttrData.h"

namespace vor::velmo_sdk {

// Calls `visit(std::span<const T>)` with all numbers of a buffer in a row, T being what its elements are made of.
// Does not call it for a buffer without an element type.
template <class Visit> void visitNumbers(const AttrData& buffer, Visit visit) {
    switch (elementLayout(buffer.dataType()).componentType) {
    case DataType::Bool:
        return visit(buffer.elements<bool>());
    case DataType::Char:
        return visit(buffer.elements<i8>());
    case DataType::Byte:
        return visit(buffer.elements<u8>());
    case DataType::Int16:
        return visit(buffer.elements<i16>());
    case DataType::UInt16:
        return visit(buffer.elements<u16>());
    case DataType::Int32:
        return visit(buffer.elements<i32>());
    case DataType::UInt32:
        return visit(buffer.elements<u32>());
    case DataType::Int64:
        return visit(buffer.elements<i64>());
    case DataType::UInt64:
        return visit(buffer.elements<u64>());
    case DataType::Float:
        return visit(buffer.elements<float>());
    case DataType::Double:
        return visit(buffer.elements<double>());
    default: // addresses mean nothing outside their process
        return;
    }
}

} // namespace vor::velmo_sdk

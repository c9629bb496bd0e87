// Which value fits which input, and what becomes of it.
#pragma once

#include "scene/AttrData.h"

namespace vor::velmo_sdk::impl {

enum class Fit {
    Same,      // written as it is
    Converted, // made the input's type first
    Narrowed,  // the same, with a warning
    Rejected,  // not the input's business
};

// How a value of type `value` fits an input of type `input`. Widening is silent, narrowing is not.
[[nodiscard]] Fit fit(AttrType value, AttrType input) noexcept;

// A value that fits, as a value of type `to`. Numbers to Bool: whether not zero. Int and UInt keep
// their 64 bits. Real to integers: towards zero, saturating, NaN is 0. Real to several components fills
// them all, a colour's alpha with 1. Vectors copy their leading components; missing ones are 0, a
// missing alpha is 1. Mat3 fills the upper left of an identity, Mat4 yields its upper left.
[[nodiscard]] AttrData convert(const AttrData& value, AttrType to);

} // namespace vor::velmo_sdk::impl

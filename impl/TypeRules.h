// Which values fit which inputs, and how they are converted.
#pragma once

#include "scene/AttrData.h"

namespace vor::velmo_sdk::impl {

enum class Fit {
    Same,      // written unchanged
    Converted, // converted to the input's type
    Narrowed,  // converted with a warning
    Rejected,  // reported as an error; the scene decides whether to write it
};

// How a value of type `value` fits an input of type `input`. Widening is silent, narrowing is reported.
[[nodiscard]] Fit fit(AttrType value, AttrType input) noexcept;

// Converts a value that fits to type `to`:
//   integer to Bool   true unless 0
//   Int, UInt         keep their 64 bits
//   Real to integer   truncated towards zero, saturating; NaN becomes 0
//   Real to vector    copied to all components, except alpha, which is 1
//   vector to vector  leading components are copied; missing ones are 0, a missing alpha is 1
//   Mat3 to Mat4      the upper left of an identity matrix; Mat4 to Mat3 copies the upper left
[[nodiscard]] AttrData convert(const AttrData& value, AttrType to);

} // namespace vor::velmo_sdk::impl

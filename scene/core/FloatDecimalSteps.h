// The steps of floatDecimals128() and floatDecimalsAvx2(), which each include this once: a function template that two
// instruction sets share cannot be inlined into the code for either. The source has defined, in namespace vor,
//
//   VRN_LANES_PART                       the attributes of a function that uses its vectors
//   Lanes                                a vector of u64
//   loadBits(const float*)               the bits of as many floats as there are lanes
//   multiply32(a, b)                     the products of the lower halves of the lanes
//   shiftLeft(a, b), shiftRight(a, b)    each lane of a, shifted by that of b
//   isGreater(a, b)                      all ones in the lanes where a > b, for numbers below 2^63
//   powerOfFive(exponents)               5^exponent, for the exponents of the fast range, up to 13
#pragma once

#include "scene/core/DecimalArithmetic.h"
#include "scene/core/FloatDecimals.h"
#include "scene/core/ShortestDecimal.h"

#include <cstring>

namespace vor {

namespace {

// The decimals of numbers in the fast range, by the same steps as shortestDecimal(). Powers of two, whose lower
// neighbour is closer, need no exception among floats: a test covers each of them.
struct ShortestDecimals {
    Lanes digits;
    Lanes places;
};
VRN_LANES_PART ShortestDecimals shortestDecimals(Lanes bits) {
    using Form = detail::RealForm<float>;
    constexpr u64 hiddenBit = u64(1) << Form::mantissaBits;
    const Lanes mantissa = (bits & (hiddenBit - 1)) | hiddenBit;
    const Lanes minusQ = u64(Form::bias) - (bits >> Form::mantissaBits);
    // places = ceil(-q * log10(2)), in fixed point.
    constexpr u64 roundUp = (u64(1) << detail::logFractionBits) - 1;
    const Lanes places = (multiply32(minusQ, detail::log10OfTwo) + roundUp) >> detail::logFractionBits;

    const Lanes power = powerOfFive(places);
    const Lanes point = minusQ + 2 - places;
    const Lanes product = multiply32(mantissa << 2, power);
    const Lanes units = shiftRight(product, point);
    const Lanes one = shiftLeft(Lanes{} + 1, point);
    const Lanes rest = product & (one - 1);
    const Lanes reach = power + power - (mantissa & 1); // the distance to the midpoints on both sides

    const Lanes tens = multiply32(multiply32(units, detail::reciprocal<10, 35, (u64(1) << 32)>()) >> 35, 10);
    const Lanes restOfTens = product - multiply32(tens, one);
    const Lanes areTensOut = isGreater(restOfTens, reach);
    const Lanes areNextTensOut = isGreater(multiply32(one, 10) - restOfTens, reach);
    const Lanes isNextNearer = isGreater(rest + rest + (units & 1), one);
    const Lanes shorter = tens + (~areNextTensOut & 10);
    const Lanes nearest = units - isNextNearer;
    return {nearest ^ ((nearest ^ shorter) & (areTensOut ^ areNextTensOut)), places};
}

VRN_LANES_PART FloatDecimals floatDecimals(const float* numbers) {
    using Form = detail::RealForm<float>;
    constexpr u64 placeholder = (u64(Form::bias - 1) << Form::mantissaBits) + 1; // for zeros: a number with one place
    FloatDecimals decimals;
    for (std::size_t i = 0; i < FloatDecimals::size; i += sizeof(Lanes) / sizeof(u64)) {
        const Lanes bits = loadBits(numbers + i) & ~(u32(1) << 31);
        const Lanes isZero = isGreater(Lanes{} + 1, bits);
        const auto [digits, places] = shortestDecimals(bits | (isZero & placeholder));
        const Lanes digitsUnlessZero = digits & ~isZero;
        std::memcpy(decimals.digits + i, &digitsUnlessZero, sizeof digitsUnlessZero);
        std::memcpy(decimals.places + i, &places, sizeof places);
    }
    return decimals;
}

} // namespace

} // namespace vor

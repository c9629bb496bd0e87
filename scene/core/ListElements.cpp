#include "scene/core/ListElements.h"

#include "scene/core/CharBlock.h"
#include "scene/core/InstructionSet.h"
#include "scene/core/NumberLists.h"

#include <algorithm>
#include <bit>

#if defined(__x86_64__)
#    include "scene/core/Avx512.h"
#endif

namespace vor {

namespace {

constexpr std::size_t windowSize = 64;
static_assert(listNumberCapacity < windowSize, "every window within a list contains a space");
static_assert(elementsSlack == windowSize);

// Policies for the two operations on windows: the mask of the spaces, and the index of the n-th set bit of a mask.
struct BaselineOps {
    static u64 spaceMask(const char* window) noexcept {
        const auto spaces = [window](std::size_t at) { return CharBlock::load(window + at).is(' '); };
        return CharBlock::Mask::join(spaces(0), spaces(16), spaces(32), spaces(48));
    }
    static std::size_t indexOfBit(std::size_t n, u64 bits) noexcept {
        for (; n != 0; --n)
            bits &= bits - 1;
        return static_cast<std::size_t>(std::countr_zero(bits));
    }
};

#if defined(__x86_64__)
struct Avx512Ops {
    VRN_AVX512 static u64 spaceMask(const char* window) noexcept {
        return _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(window), _mm512_set1_epi8(' '));
    }
    VRN_AVX512 static std::size_t indexOfBit(std::size_t n, u64 bits) noexcept {
        return static_cast<std::size_t>(std::countr_zero(_pdep_u64(u64(1) << n, bits)));
    }
};
#endif

// `length` is at least 1. If each number is an element, only the last window matters; otherwise the
// spaces of all windows are counted, from the end.
template <class Ops>
[[gnu::always_inline]] inline std::size_t lengthOf(const char* numbers, std::size_t length,
                                                   std::size_t numbersPerElement) noexcept {
    u64 last = Ops::spaceMask(numbers + length - windowSize);
    if (length < windowSize)
        last &= ~u64(0) << (windowSize - length); // clear what precedes the list
    if (numbersPerElement == 1)
        return last == 0 ? 0 : length - static_cast<std::size_t>(std::countl_zero(last));

    const auto countIn = [](u64 spaces) { return static_cast<std::size_t>(std::popcount(spaces)); };
    std::size_t count = countIn(last);
    for (std::size_t remaining = length; remaining > windowSize;) {
        remaining -= windowSize;
        const u64 spaces = Ops::spaceMask(numbers + remaining - windowSize);
        count += countIn(remaining < windowSize ? spaces >> (windowSize - remaining) : spaces);
    }
    if (count < numbersPerElement)
        return 0;
    std::size_t surplus = count % numbersPerElement; // numbers after the last complete element
    while (surplus >= countIn(last)) {
        surplus -= countIn(last);
        length -= windowSize;
        last = Ops::spaceMask(numbers + length - windowSize);
    }
    return length - windowSize + Ops::indexOfBit(countIn(last) - 1 - surplus, last) + 1;
}

#if defined(__x86_64__)
VRN_AVX512 std::size_t lengthAvx512(const char* numbers, std::size_t length, std::size_t numbersPerElement) noexcept {
    return lengthOf<Avx512Ops>(numbers, length, numbersPerElement);
}
#endif

} // namespace

std::size_t lengthOfElements(std::string_view numbers, std::size_t maxLength, std::size_t numbersPerElement) noexcept {
    const std::size_t length = std::min(maxLength, numbers.size());
    if (length == 0)
        return 0;
#if defined(__x86_64__)
    if (instructionSet() == InstructionSet::Avx512)
        return lengthAvx512(numbers.data(), length, numbersPerElement);
#endif
    return lengthOf<BaselineOps>(numbers.data(), length, numbersPerElement);
}

std::size_t lengthOfElement(std::string_view numbers, std::size_t numbersPerElement) noexcept {
    std::size_t length = 0;
    for (; numbersPerElement != 0; --numbersPerElement)
        length = numbers.find(' ', length) + 1;
    return length;
}

} // namespace vor

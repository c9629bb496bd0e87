#include "scene/core/ListElements.h"

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
static_assert(listNumberCapacity < windowSize, "every window within a list has a space");
static_assert(elementsSlack == windowSize);

// What is asked of the characters of a window: a bit for each, whether it is a space, and where the n-th bit is.
struct OneByOne {
#if defined(__x86_64__)
    static u64 spacesIn(const char* window) noexcept {
        const auto sixteen = [window](std::size_t at) {
            const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(window + at));
            return u64(static_cast<u32>(_mm_movemask_epi8(_mm_cmpeq_epi8(characters, _mm_set1_epi8(' '))))) << at;
        };
        return sixteen(0) | sixteen(16) | sixteen(32) | sixteen(48);
    }
#else
    static u64 spacesIn(const char* window) noexcept {
        u64 spaces = 0;
        for (std::size_t i = 0; i < windowSize; ++i)
            spaces |= u64(window[i] == ' ') << i;
        return spaces;
    }
#endif
    static std::size_t placeOf(std::size_t n, u64 bits) noexcept {
        for (; n != 0; --n)
            bits &= bits - 1;
        return static_cast<std::size_t>(std::countr_zero(bits));
    }
};

#if defined(__x86_64__)
struct Together {
    VRN_AVX512 static u64 spacesIn(const char* window) noexcept {
        return _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(window), _mm512_set1_epi8(' '));
    }
    VRN_AVX512 static std::size_t placeOf(std::size_t n, u64 bits) noexcept {
        return static_cast<std::size_t>(std::countr_zero(_pdep_u64(u64(1) << n, bits)));
    }
};
#endif

// Of at least one character.
template <class Characters>
[[gnu::always_inline]] inline std::size_t lengthOf(const char* numbers, std::size_t length, std::size_t each) noexcept {
    u64 last = Characters::spacesIn(numbers + length - windowSize);
    if (length < windowSize)
        last &= ~u64(0) << (windowSize - length); // of what stands before the list
    if (each == 1)
        return last == 0 ? 0 : length - static_cast<std::size_t>(std::countl_zero(last));

    const auto countIn = [](u64 spaces) { return static_cast<std::size_t>(std::popcount(spaces)); };
    std::size_t count = countIn(last);
    for (std::size_t left = length; left > windowSize;) {
        left -= windowSize;
        const u64 spaces = Characters::spacesIn(numbers + left - windowSize);
        count += countIn(left < windowSize ? spaces >> (windowSize - left) : spaces);
    }
    if (count < each)
        return 0;
    std::size_t others = count % each; // numbers behind the last whole element
    while (others >= countIn(last)) {
        others -= countIn(last);
        length -= windowSize;
        last = Characters::spacesIn(numbers + length - windowSize);
    }
    return length - windowSize + Characters::placeOf(countIn(last) - 1 - others, last) + 1;
}

#if defined(__x86_64__)
VRN_AVX512 std::size_t lengthTogether(const char* numbers, std::size_t length, std::size_t each) noexcept {
    return lengthOf<Together>(numbers, length, each);
}
#endif

} // namespace

std::size_t lengthOfElements(std::string_view numbers, std::size_t room, std::size_t each) noexcept {
    const std::size_t length = std::min(room, numbers.size());
    if (length == 0)
        return 0;
#if defined(__x86_64__)
    if (instructionSet() == InstructionSet::Avx512)
        return lengthTogether(numbers.data(), length, each);
#endif
    return lengthOf<OneByOne>(numbers.data(), length, each);
}

std::size_t lengthOfElement(std::string_view numbers, std::size_t each) noexcept {
    std::size_t length = 0;
    for (; each != 0; --each)
        length = numbers.find(' ', length) + 1;
    return length;
}

} // namespace vor

// As in PlainBlocksAvx512.cpp, 64 characters are looked at together; their numbers then go four at a time,
// each loaded with its last digit at the end of a lane of its own.
#include "impl/numbers/PlainBlocksAvx2.h"

#if defined(__x86_64__)

#    include "impl/lexer/CharClass.h"
#    include "impl/numbers/BlockMasks.h"
#    include "scene/core/PlainNumber.h"

#    include <cstring>
#    include <immintrin.h>
#    include <limits>
#    include <type_traits>

#    define VRN_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))

namespace vor::velmo_sdk::impl {

namespace {

// Number characters by two lookups of a nibble each: one if the entries share a bit. All characters of a
// row (high nibble) that are number characters share a bit with no other row's.
struct alignas(16) NibbleTables {
    u8 low[16] = {};
    u8 high[16] = {};
    static constexpr u8 bitOfRow(int row) { return row == 2 ? 1 : row == 3 ? 2 : row == 4 || row == 6 ? 4 : 8; }
    constexpr NibbleTables() {
        for (int c = 0; c < 128; ++c)
            if (isIn(static_cast<char>(c), numberChar)) {
                low[c & 15] |= bitOfRow(c >> 4);
                high[c >> 4] |= bitOfRow(c >> 4);
            }
    }
    // Characters from 0x80 on look up 0 in the low nibble's table.
    [[nodiscard]] constexpr bool isExact() const {
        for (int c = 0; c < 128; ++c)
            if (((low[c & 15] & high[c >> 4]) != 0) != isIn(static_cast<char>(c), numberChar))
                return false;
        return true;
    }
};
constexpr NibbleTables nibbles;
static_assert(nibbles.isExact());

// For a number of `length` characters, its sign left out, at the end of 16, of which `places` stand behind a
// point (noPoint: there is none): where the 16 characters without the point come from, zeros to the left.
constexpr std::size_t noPoint = 16;
struct alignas(16) Shuffles {
    u8 from[17][17][16] = {};
    constexpr Shuffles() {
        for (std::size_t length = 0; length <= 16; ++length)
            for (std::size_t places = 0; places <= noPoint; ++places) {
                std::size_t left = length; // characters that have not been taken yet
                for (std::size_t i = 16; i-- > 0;) {
                    if (left > 0 && places != noPoint && length - left == places)
                        --left;
                    from[length][places][i] = left > 0 ? static_cast<u8>(16 - length + left - 1) : 0x80;
                    left -= left > 0 ? 1 : 0;
                }
            }
    }
};
constexpr Shuffles shuffles;

VRN_AVX2 inline u64 bits(__m256i low, __m256i high) {
    return static_cast<u32>(_mm256_movemask_epi8(low)) | u64(static_cast<u32>(_mm256_movemask_epi8(high))) << 32;
}

VRN_AVX2 inline __m256i isNumber(__m256i text) {
    const __m256i low = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(nibbles.low)));
    const __m256i high = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(nibbles.high)));
    const __m256i row = _mm256_and_si256(_mm256_srli_epi16(text, 4), _mm256_set1_epi8(15));
    const __m256i shared = _mm256_and_si256(_mm256_shuffle_epi8(low, text), _mm256_shuffle_epi8(high, row));
    return _mm256_cmpgt_epi8(shared, _mm256_setzero_si256());
}

VRN_AVX2 inline __m256i isDigit(__m256i text) {
    const __m256i value = _mm256_sub_epi8(text, _mm256_set1_epi8('0'));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(value, _mm256_set1_epi8(9)), value);
}

VRN_AVX2 inline u64 bitsOf(__m256i low, __m256i high, char c) {
    const __m256i all = _mm256_set1_epi8(c);
    return bits(_mm256_cmpeq_epi8(low, all), _mm256_cmpeq_epi8(high, all));
}

// Where 9, or 17, number characters stand in a row.
constexpr u64 runsOf9(u64 number) noexcept {
    u64 runs = number & (number >> 1);
    runs &= runs >> 2;
    runs &= runs >> 4;
    return runs & (number >> 8);
}
constexpr u64 runsOf17(u64 number) noexcept {
    u64 runs = number & (number >> 1);
    runs &= runs >> 2;
    runs &= runs >> 4;
    runs &= runs >> 8;
    return runs & (number >> 16);
}

template <bool isReal> VRN_AVX2 inline Found find(const char* at, BlockNumbers& numbers, bool& isShort) {
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + 32));
    const BlockMasks is{bits(isNumber(low), isNumber(high)), bits(isDigit(low), isDigit(high)), bitsOf(low, high, '-'),
                        isReal ? bitsOf(low, high, '.') : 0};
    if (const Found found = findNumbers<isReal>(is, numbers); found != Found::Numbers)
        return found;
    const u64 inside = (u64(1) << numbers.length) - 1;
    isShort = (runsOf9(is.number) & inside) == 0;
    if (!isShort && (runsOf17(is.number) & inside) != 0)
        return Found::Other;
    // Without the one that is not whole, the masks run out together.
    numbers.starts &= inside;
    numbers.wholes &= inside | numbers.ends;
    return Found::Numbers;
}

// Takes numbers off the masks one by one; behind the last, all places are that of the block's end.
struct Taken {
    std::size_t start; // behind the sign
    std::size_t whole;
    std::size_t end;
    u64 isNegative;
};
VRN_AVX2 inline Taken take(BlockNumbers& numbers) {
    const auto start = static_cast<std::size_t>(_tzcnt_u64(numbers.starts));
    const auto whole = static_cast<std::size_t>(_tzcnt_u64(numbers.wholes));
    const auto end = static_cast<std::size_t>(_tzcnt_u64(numbers.ends));
    const u64 isNegative = _bextr_u64(numbers.signs, static_cast<u32>(start), 1);
    numbers.starts = _blsr_u64(numbers.starts);
    numbers.wholes = _blsr_u64(numbers.wholes);
    numbers.ends = _blsr_u64(numbers.ends);
    return {start + isNegative, whole, end, isNegative};
}

VRN_AVX2 inline __m256i joinFours(__m256i digits) {
    const __m256i pairs = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(0x010A));
    return _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00010064));
}

VRN_AVX2 inline __m256i joinHalves(__m256i halves, i64 factor) {
    return _mm256_add_epi64(_mm256_mul_epu32(halves, _mm256_set1_epi64x(factor)), _mm256_srli_epi64(halves, 32));
}

// Up to eight digits as bytes of their values, the last one highest.
VRN_AVX2 inline i64 eightDigits(const char* at, const Taken& number) {
    u64 word;
    std::memcpy(&word, at + number.end - 8, sizeof word);
    word ^= 0x3030303030303030;
    return static_cast<i64>(word ^ _bzhi_u64(word, static_cast<u32>(64 - 8 * (number.end - number.start))));
}

VRN_AVX2 inline __m256i shortIntegers(const char* at, const Taken (&numbers)[4]) {
    const __m128i low = _mm_set_epi64x(eightDigits(at, numbers[1]), eightDigits(at, numbers[0]));
    const __m128i high = _mm_set_epi64x(eightDigits(at, numbers[3]), eightDigits(at, numbers[2]));
    return joinHalves(joinFours(_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1)), 10000);
}

VRN_AVX2 inline __m128i sixteen(const char* at, const Taken& number) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + number.end - 16));
}

template <bool isReal> VRN_AVX2 inline __m128i shuffle(const Taken& number) {
    const bool hasPoint = isReal && number.whole != number.end;
    const std::size_t places = hasPoint ? number.end - number.whole - 1 : noPoint;
    return _mm_load_si128(reinterpret_cast<const __m128i*>(shuffles.from[number.end - number.start][places]));
}

// The digits of two numbers, each in 16 bytes.
template <bool isReal> VRN_AVX2 inline __m256i sixteenDigits(const char* at, const Taken& a, const Taken& b) {
    const __m256i text = _mm256_inserti128_si256(_mm256_castsi128_si256(sixteen(at, a)), sixteen(at, b), 1);
    const __m256i from = _mm256_inserti128_si256(_mm256_castsi128_si256(shuffle<isReal>(a)), shuffle<isReal>(b), 1);
    return _mm256_shuffle_epi8(_mm256_xor_si256(text, _mm256_set1_epi8('0')), from);
}

template <bool isReal> VRN_AVX2 inline __m256i longIntegers(const char* at, const Taken (&numbers)[4]) {
    const __m256i even = joinFours(sixteenDigits<isReal>(at, numbers[0], numbers[2]));
    const __m256i odd = joinFours(sixteenDigits<isReal>(at, numbers[1], numbers[3]));
    const __m256i eights = _mm256_madd_epi16(_mm256_packus_epi32(even, odd), _mm256_set1_epi32(0x00012710));
    return joinHalves(eights, 100000000);
}

// All bits of the lanes of negative numbers.
VRN_AVX2 inline __m256i negativeLanes(const Taken (&numbers)[4]) {
    const __m256i isNegative =
        _mm256_setr_epi64x(static_cast<i64>(numbers[0].isNegative), static_cast<i64>(numbers[1].isNegative),
                           static_cast<i64>(numbers[2].isNegative), static_cast<i64>(numbers[3].isNegative));
    return _mm256_sub_epi64(_mm256_setzero_si256(), isNegative);
}

template <class Number> VRN_AVX2 inline void store(std::byte* out, __m256i integers) {
    if constexpr (sizeof(Number) == 8)
        return _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), integers);
    const __m256i words = _mm256_permutevar8x32_epi32(integers, _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
    __m128i narrow = _mm256_castsi256_si128(words);
    if constexpr (sizeof(Number) == 4)
        return _mm_storeu_si128(reinterpret_cast<__m128i*>(out), narrow);
    constexpr char n = -1;
    if constexpr (sizeof(Number) == 2)
        narrow = _mm_shuffle_epi8(narrow, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, n, n, n, n, n, n, n, n));
    else
        narrow = _mm_shuffle_epi8(narrow, _mm_setr_epi8(0, 4, 8, 12, n, n, n, n, n, n, n, n, n, n, n, n));
    const i64 all = _mm_cvtsi128_si64(narrow);
    std::memcpy(out, &all, 4 * sizeof(Number) <= sizeof all ? 4 * sizeof(Number) : sizeof all);
}

// Four integers with their signs; false if one is too large for the type.
template <class Number> VRN_AVX2 inline bool finish(__m256i integers, const Taken (&numbers)[4], std::byte* out) {
    constexpr u64 largest = std::numeric_limits<Number>::max();
    if constexpr (largest < 10000000000000000)
        if (!_mm256_testz_si256(_mm256_cmpgt_epi64(integers, _mm256_set1_epi64x(static_cast<i64>(largest))),
                                _mm256_set1_epi8(-1)))
            return false;
    const __m256i negative = negativeLanes(numbers);
    if constexpr (std::is_signed_v<Number>)
        integers = _mm256_sub_epi64(_mm256_xor_si256(integers, negative), negative);
    else if (!_mm256_testz_si256(negative, negative))
        return false;
    store<Number>(out, integers);
    return true;
}

// Unsigned integers below 2^53 as doubles: the halves become the low digits of 2^84 and 2^52.
VRN_AVX2 inline __m256d toDoubles(__m256i integers) {
    const __m256i high = _mm256_or_si256(_mm256_srli_epi64(integers, 32), _mm256_castpd_si256(_mm256_set1_pd(0x1p84)));
    const __m256i low = _mm256_blend_epi32(_mm256_castpd_si256(_mm256_set1_pd(0x1p52)), integers, 0x55);
    return _mm256_add_pd(_mm256_sub_pd(_mm256_castsi256_pd(high), _mm256_set1_pd(0x1p84 + 0x1p52)),
                         _mm256_castsi256_pd(low));
}

VRN_AVX2 inline double power(const Taken& number) {
    return vor::detail::exactPowersOfTen[number.whole == number.end ? 0 : number.end - number.whole - 1];
}

// Four reals; false if one cannot be made by one division that is rounded once (Clinger 1990).
template <class Number>
requires std::is_floating_point_v<Number> VRN_AVX2 inline bool finish(__m256i digits, const Taken (&numbers)[4],
                                                                      std::byte* out) {
    __m256i odd = _mm256_cmpgt_epi64(digits, _mm256_set1_epi64x(i64(1) << 53));
    const __m256d divisors = _mm256_setr_pd(power(numbers[0]), power(numbers[1]), power(numbers[2]), power(numbers[3]));
    __m256d values = _mm256_div_pd(toDoubles(digits), divisors);
    if constexpr (sizeof(Number) == sizeof(float)) {
        // Rounding twice goes wrong only where the double looks like a tie between two floats.
        const __m256i tail = _mm256_and_si256(_mm256_castpd_si256(values), _mm256_set1_epi64x(0x1FFFFFFF));
        odd = _mm256_or_si256(odd, _mm256_cmpeq_epi64(tail, _mm256_set1_epi64x(0x10000000)));
    }
    if (!_mm256_testz_si256(odd, odd))
        return false;
    const __m256i signs = _mm256_slli_epi64(negativeLanes(numbers), 63);
    values = _mm256_xor_pd(values, _mm256_castsi256_pd(signs));
    if constexpr (sizeof(Number) == sizeof(float))
        _mm_storeu_ps(reinterpret_cast<float*>(out), _mm256_cvtpd_ps(values));
    else
        _mm256_storeu_pd(reinterpret_cast<double*>(out), values);
    return true;
}

template <class Number> VRN_AVX2 inline bool convert(const char* at, BlockNumbers block, bool isShort, std::byte* out) {
    constexpr bool isReal = std::is_floating_point_v<Number>;
    for (; block.ends != 0; out += 4 * sizeof(Number)) {
        const Taken numbers[] = {take(block), take(block), take(block), take(block)};
        const __m256i integers = !isReal && isShort ? shortIntegers(at, numbers) : longIntegers<isReal>(at, numbers);
        if (!finish<Number>(integers, numbers, out))
            return false;
    }
    return true;
}

template <class Number>
VRN_AVX2 BlockProgress readBlocks(const char* at, const char* end, std::byte* out, std::size_t room) {
    std::size_t numbers = 0;
    while (static_cast<std::size_t>(end - at) >= blockSize && room - numbers >= mostNumbers) {
        BlockNumbers block;
        bool isShort = false;
        const Found found = find<std::is_floating_point_v<Number>>(at, block, isShort);
        if (found == Found::Separators) {
            at += blockSize;
            continue;
        }
        if (found == Found::Other || !convert<Number>(at, block, isShort, out + numbers * sizeof(Number)))
            break;
        at += block.length;
        numbers += static_cast<std::size_t>(std::popcount(block.ends));
    }
    return {at, numbers};
}

} // namespace

template <class Number> BlockReader blockReaderAvx2() noexcept { return readBlocks<Number>; }

#    define VRN_INSTANTIATE(Number) template BlockReader blockReaderAvx2<Number>() noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

#endif

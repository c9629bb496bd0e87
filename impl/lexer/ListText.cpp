#include "impl/lexer/ListText.h"

#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <string>

#ifdef __SSE2__
#    include <emmintrin.h>
#endif

namespace vor::velmo_sdk::impl {

namespace {

constexpr std::size_t blockSize = 16;
[[maybe_unused]] constexpr int allOfBlock = (1 << blockSize) - 1;

// Whether 16 characters are all plain: allowed in a list in braces, and not a brace themselves. A subset is enough,
// chosen for few comparisons: `(` to `9` except `*` and `/`, the letters `a` to `f`, and everything up to the space.
// The scan loop handles all others by the table of CharClass.h.
#ifdef __SSE2__
__m128i isBetween(__m128i bytes, char first, char last) noexcept {
    const __m128i fromFirst = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
    return _mm_cmpeq_epi8(_mm_min_epu8(fromFirst, _mm_set1_epi8(static_cast<char>(last - first))), fromFirst);
}
bool isPlainBlock(const char* block) noexcept {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
    const __m128i blank = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ')), bytes);
    const __m128i star = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('*'));
    const __m128i slash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('/'));
    const __m128i number = _mm_andnot_si128(_mm_or_si128(star, slash), isBetween(bytes, '(', '9'));
    constexpr char caseBit = 'a' ^ 'A'; // set in lower case letters
    const __m128i letter = isBetween(_mm_or_si128(bytes, _mm_set1_epi8(caseBit)), 'a', 'f');
    return _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(number, letter), blank)) == allOfBlock;
}
#else
bool isPlainBlock(const char* block) noexcept {
    bool isPlain = true;
    for (std::size_t i = 0; i < blockSize; ++i) {
        const char c = block[i];
        isPlain &= (static_cast<u8>(c) <= ' ') || (c >= '(' && c <= '9' && c != '*' && c != '/') ||
                   (String::lower(c) >= 'a' && String::lower(c) <= 'f');
    }
    return isPlain;
}
#endif

} // namespace

// Most of a long list is plain. Testing 16 characters together is ten times as fast as one by one.
ScanExtent ListScanner::scan(std::string_view piece) noexcept {
    std::size_t i = isInside_ || piece.empty() ? 0 : 1;
    isInside_ = true;
    const bool isInBraces = open_ == '{';
    while (i < piece.size()) {
        if (isInBraces && piece.size() - i >= blockSize && isPlainBlock(piece.data() + i)) {
            i += blockSize;
            continue;
        }
        const std::size_t blockEnd = std::min(i + blockSize, piece.size());
        for (; i < blockEnd; ++i) {
            const char c = piece[i];
            if (isIn(c, blankChar | numberChar))
                continue;
            if (c == open_) {
                ++depth_;
                isFlat_ = false;
            } else if (c == close_) {
                if (depth_ == 0)
                    return {i + 1, ScanEnd::Closed};
                --depth_;
            } else if (!isIn(c, listPunctuation)) {
                const bool isEnd = c == static_cast<char>(endOfText);
                return {i, isEnd ? ScanEnd::EndOfText : ScanEnd::BadCharacter};
            }
        }
    }
    return {i, ScanEnd::EndOfText};
}

char* ListFlattener::flatten(std::string_view piece, char* out) noexcept {
    for (const char c : piece) {
        if (step_ == Step::Blanks && isIn(c, blankChar))
            continue; // a run of blanks is one step
        if (step_ != Step::None && isAfterNumber_ && c != close_) {
            *out++ = ' ';
            isAfterNumber_ = false;
        }
        step_ = Step::None;
        if (isIn(c, numberChar)) {
            *out++ = c;
            isAfterNumber_ = true;
        } else if (c != open_ && c != close_) {
            step_ = isIn(c, blankChar) ? Step::Blanks : Step::Separator;
        }
    }
    return out;
}

void ListFlattener::follow(std::string_view characters) noexcept {
    if (!characters.empty())
        isAfterNumber_ = isIn(characters.back(), numberChar);
}

bool isCanonical(std::string_view raw) noexcept {
    bool isAfterNumber = false;
    for (const char c : raw.substr(1, raw.size() - 2)) {
        const bool isNumber = isIn(c, numberChar);
        if (!isNumber && (c != ' ' || !isAfterNumber))
            return false;
        isAfterNumber = isNumber;
    }
    return isAfterNumber || raw.size() == 2;
}

} // namespace vor::velmo_sdk::impl

#include "impl/lexer/ListText.h"

#include "impl/lexer/CharClass.h"

#include <string>

#ifdef __SSE2__
#    include <emmintrin.h>
#endif

namespace vor::velmo_sdk::impl {

namespace {

constexpr std::size_t blockSize = 16;

// Whether 16 characters are all digits, points, minus signs or blanks of ASCII: what lists of numbers
// are made of, and nothing that ends, nests or breaks one.
#ifdef __SSE2__
bool isPlainBlock(const char* block) noexcept {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
    const __m128i fromMinus = _mm_sub_epi8(bytes, _mm_set1_epi8('-'));
    const __m128i number = _mm_cmpeq_epi8(_mm_min_epu8(fromMinus, _mm_set1_epi8('9' - '-')), fromMinus);
    const __m128i blank = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ')), bytes);
    const __m128i slash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('/'));
    const __m128i plain = _mm_andnot_si128(slash, _mm_or_si128(number, blank));
    return _mm_movemask_epi8(plain) == 0xFFFF;
}
#else
bool isPlainBlock(const char* block) noexcept {
    bool isPlain = true;
    for (std::size_t i = 0; i < blockSize; ++i) {
        const u8 c = static_cast<u8>(block[i]);
        isPlain &= (c >= '-' && c <= '9' && c != '/') || c <= ' ';
    }
    return isPlain;
}
#endif

} // namespace

// Most of a long list is plain, so that blocks of it need no look at each character, which would
// take ten times as long.
ListExtent ListScanner::scan(std::string_view piece) noexcept {
    std::size_t i = isInside_ || piece.empty() ? 0 : 1;
    isInside_ = true;
    while (i < piece.size()) {
        if (piece.size() - i >= blockSize && isPlainBlock(piece.data() + i)) {
            i += blockSize;
            continue;
        }
        const std::size_t blockEnd = std::min(i + blockSize, piece.size());
        for (; i < blockEnd; ++i) {
            const char c = piece[i];
            if (c == open_) {
                ++depth_;
                isFlat_ = false;
            } else if (c == close_) {
                if (depth_ == 0)
                    return {i + 1, ListExtent::End::Closed, isFlat_};
                --depth_;
            } else if (!isIn(c, blankChar | numberChar | listPunctuation)) {
                const bool isEnd = c == static_cast<char>(endOfText);
                return {i, isEnd ? ListExtent::End::EndOfText : ListExtent::End::BadCharacter, isFlat_};
            }
        }
    }
    return {i, ListExtent::End::EndOfText, isFlat_};
}

String canonicalList(std::string_view raw) {
    const char open = raw.front();
    const char close = raw.back();
    std::string text(1, open);
    for (std::size_t i = 1; i + 1 < raw.size(); ++i) {
        const char c = raw[i];
        if (c == open || c == close)
            continue;
        if (isIn(c, numberChar)) {
            text += c;
            continue;
        }
        // A separator, or a whole run of blanks.
        if (isIn(c, blankChar))
            while (isIn(raw[i + 1], blankChar))
                ++i;
        if (text.back() != ' ' && text.back() != open && raw[i + 1] != close)
            text += ' ';
    }
    text += close;
    return std::string_view(text);
}

} // namespace vor::velmo_sdk::impl

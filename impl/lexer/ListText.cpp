#include "impl/lexer/ListText.h"

#include "scene/core/CharBlock.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

// Whether sixteen characters are all allowed in a list in braces, and not a brace themselves. A subset is enough,
// chosen for few comparisons: `(` to `9` except `*` and `/`, the letters `a` to `f`, and everything up to the space.
// The loop below handles all others by the table of CharClass.h.
static bool isPlainBlock(const char* block) noexcept {
    const CharBlock text = CharBlock::load(block);
    const CharBlock::Mask letter = text.lowerCase().between('a', 'f');
    const CharBlock::Mask number = text.between('(', '9') & ~(text.is('*') | text.is('/'));
    return (number | letter | text.between('\0', ' ')).isAll();
}

// Most of a long list is plain. Testing 16 characters together is ten times as fast as one by one.
std::size_t flatLength(std::string_view text) noexcept {
    constexpr int inList = blankChar | numberChar | listPunctuation;
    std::size_t i = 0;
    while (i < text.size()) {
        if (text.size() - i >= CharBlock::size && isPlainBlock(text.data() + i)) {
            i += CharBlock::size;
            continue;
        }
        for (const std::size_t blockEnd = std::min(i + CharBlock::size, text.size()); i < blockEnd; ++i)
            if (!isIn(text[i], inList) || text[i] == '{' || text[i] == '}')
                return i;
    }
    return i;
}

std::size_t canonicalLength(std::string_view text, char close) noexcept {
    bool isAfterNumber = false;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == close)
            return isAfterNumber || i == 1 ? i + 1 : 0;
        const bool isNumber = isIn(text[i], numberChar);
        if (!isNumber && (text[i] != ' ' || !isAfterNumber))
            return 0;
        isAfterNumber = isNumber;
    }
    return 0;
}

} // namespace vor::velmo_sdk::impl

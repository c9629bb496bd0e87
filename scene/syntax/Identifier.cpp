#include "scene/syntax/Identifier.h"

#include "scene/syntax/CharClass.h"
#include "scene/syntax/Keyword.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

static bool isLiteral(std::string_view word) noexcept {
    const u64 number = keywordNumber(word);
    return number == keyword("true") || number == keyword("false") || number == keyword("null");
}

bool isIdentifier(std::string_view text) noexcept {
    const auto isPart = [](char c) { return isIn(c, identifierChar); };
    return !text.empty() && !String::isDigit(text[0]) && std::ranges::all_of(text, isPart) && !isLiteral(text);
}

bool isOutputName(std::string_view text) noexcept {
    const std::size_t identifier = std::min(text.find('['), text.size());
    if (!isIdentifier(text.substr(0, identifier)))
        return false;
    for (text.remove_prefix(identifier); !text.empty();) {
        const std::size_t close = text.find(']');
        if (text[0] != '[' || close == std::string_view::npos ||
            !std::ranges::all_of(text.substr(0, close), isBracketChar))
            return false;
        text.remove_prefix(close + 1);
    }
    return true;
}

} // namespace vor::velmo_sdk::impl

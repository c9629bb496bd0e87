// A quoted string, as it stands in the source.
#pragma once

#include "impl/lexer/ScanExtent.h"
#include "scene/syntax/CharClass.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

// Goes through a string that is read piece by piece; remembers between two of them what escapes what.
class StringScanner {
public:
    // Looks at the next piece; the very first begins with the opening quote.
    [[nodiscard]] ScanExtent scan(std::string_view piece) noexcept {
        std::size_t i = isInside_ || piece.empty() ? 0 : 1;
        isInside_ = true;
        for (; i < piece.size(); ++i) {
            const char c = piece[i];
            if (c == static_cast<char>(endOfText))
                return {i, ScanEnd::EndOfText};
            if (c == '"' && !isEscaped_)
                return {i + 1, ScanEnd::Closed};
            isEscaped_ = c == '\\' && !isEscaped_;
        }
        return {i, ScanEnd::EndOfText};
    }

private:
    bool isInside_ = false;
    bool isEscaped_ = false; // the next character, by a backslash that nothing escapes
};

} // namespace vor::velmo_sdk::impl

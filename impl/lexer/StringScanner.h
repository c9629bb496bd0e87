// StringScanner: finds the end of a quoted string.
#pragma once

#include "impl/lexer/ScanExtent.h"
#include "scene/syntax/CharClass.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

// Scans a string piece by piece; remembers a pending escape between pieces.
class StringScanner {
public:
    // Scans the next piece; the first one begins with the opening quote.
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
    bool isEscaped_ = false; // the next character follows an unescaped backslash
};

} // namespace vor::velmo_sdk::impl

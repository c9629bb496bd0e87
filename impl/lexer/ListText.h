// A list in parentheses or braces, as it stands in the source.
#pragma once

#include "impl/lexer/ScanExtent.h"
#include "scene/core/Types.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

// Whether a list is its own canonical text: one space between two elements, and nothing else.
[[nodiscard]] bool isCanonical(std::string_view raw) noexcept;

// Makes the canonical text of what stands between a list's brackets, from pieces that are cut anywhere: one
// space between two elements. Brackets of the list's own kind vanish, so that the elements of inner lists
// become its own.
class ListFlattener {
public:
    ListFlattener(char open, char close) noexcept : open_(open), close_(close) {}

    // Writes the canonical text of the next piece, which is never longer than the piece and one character;
    // returns the place behind it. A space between two elements comes with the second one.
    [[nodiscard]] char* flatten(std::string_view piece, char* out) noexcept;

    // Goes on behind characters that needed no flattening.
    void follow(std::string_view characters) noexcept;

private:
    enum class Step { None, Blanks, Separator };

    char open_;
    char close_;
    Step step_ = Step::None;      // what is being skipped
    bool isBehindNumber_ = false; // no space has been written since the last number character
};

// Goes through a list that is read piece by piece; remembers how deep it is between two of them.
class ListScanner {
public:
    ListScanner(char open, char close) noexcept : open_(open), close_(close) {}

    // Looks at the next piece; the very first begins with the opening bracket.
    [[nodiscard]] ScanExtent scan(std::string_view piece) noexcept;

    // Whether there has been no bracket of its own kind inside.
    [[nodiscard]] bool isFlat() const noexcept { return isFlat_; }

private:
    char open_;
    char close_;
    bool isInside_ = false;
    bool isFlat_ = true;
    u64 depth_ = 0;
};

} // namespace vor::velmo_sdk::impl

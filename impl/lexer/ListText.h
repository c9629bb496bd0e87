// Scans and normalises the source text of lists in parentheses or braces.
#pragma once

#include "impl/lexer/ScanExtent.h"
#include "scene/core/Types.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

// Whether a list, brackets included, is in canonical form: elements separated by one space, and nothing else.
[[nodiscard]] bool isCanonical(std::string_view raw) noexcept;

// Converts the text between the brackets of a list to canonical form, from pieces that are cut anywhere. Brackets of
// the list's own kind are removed, so that the elements of nested lists become elements of the list.
class ListFlattener {
public:
    ListFlattener(char open, char close) noexcept : open_(open), close_(close) {}

    // Writes the canonical form of the next piece to `out` and returns the end. It is at most one character longer than
    // the piece: the space between two elements is written with the second one.
    [[nodiscard]] char* flatten(std::string_view piece, char* out) noexcept;

    // Continues after characters that were in canonical form and copied as they are.
    void follow(std::string_view characters) noexcept;

private:
    enum class Step { None, Blanks, Separator };

    char open_;
    char close_;
    Step step_ = Step::None;     // what is being skipped
    bool isAfterNumber_ = false; // no space was written since the last character of a number
};

// Finds the end of a list that is read piece by piece, keeping the nesting depth between pieces.
class ListScanner {
public:
    ListScanner(char open, char close) noexcept : open_(open), close_(close) {}

    // Scans the next piece; the first one begins with the opening bracket.
    [[nodiscard]] ScanExtent scan(std::string_view piece) noexcept;

    // Whether no nested bracket of the list's own kind has been found so far.
    [[nodiscard]] bool isFlat() const noexcept { return isFlat_; }

private:
    char open_;
    char close_;
    bool isInside_ = false;
    bool isFlat_ = true;
    u64 depth_ = 0;
};

} // namespace vor::velmo_sdk::impl

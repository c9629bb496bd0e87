// PieceTable: a text under repeated changes, as parts of the old text and what was put between them.
//
//     PieceTable table(text);
//     table.apply(changesOfText);                  // offsets in text
//     table.apply(changesOf(table.text()));        // offsets in the text after the first changes
//     changedText(text, table.changes());          // the same as table.text()
#pragma once

#include "impl/Edit.h"

namespace vor::velmo_sdk::impl {

class PieceTable {
public:
    // The text is borrowed.
    explicit PieceTable(std::string_view text) : old_(text) { pieces_.push_back({0, text.size(), {}}); }

    // Changes the current text. The changes are in order and do not overlap. Linear in the pieces.
    void apply(std::span<const TextChange> changes);

    [[nodiscard]] std::string text() const;

    // The changes that lead from the old text to the current one.
    [[nodiscard]] std::vector<TextChange> changes() const;

    // The offset in the old text of a character of the current one; of an added character, where it was added.
    [[nodiscard]] std::size_t oldOffset(std::size_t offset) const noexcept;

private:
    // Some of the old text, or, if `length` is 0, an added text.
    struct Piece {
        std::size_t begin;
        std::size_t length;
        std::string added;
        [[nodiscard]] std::size_t size() const noexcept { return length + added.size(); }
    };

    std::string_view old_;
    std::vector<Piece> pieces_;
};

} // namespace vor::velmo_sdk::impl

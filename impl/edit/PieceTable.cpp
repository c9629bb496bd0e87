#include "impl/edit/PieceTable.h"

#include <algorithm>
#include <utility>

namespace vor::velmo_sdk::impl {

void PieceTable::apply(std::span<const TextChange> changes) {
    std::vector<Piece> result;
    std::size_t piece = 0;
    std::size_t used = 0; // of the piece
    std::size_t offset = 0;
    // Takes the current text up to an offset from the pieces, and keeps or drops it.
    const auto take = [&](std::size_t end, bool isKept) {
        while (offset < end) {
            const Piece& from = pieces_[piece];
            const std::size_t count = std::min(end - offset, from.size() - used);
            if (isKept && from.length != 0)
                result.push_back({from.begin + used, count, {}});
            else if (isKept)
                result.push_back({from.begin, 0, from.added.substr(used, count)});
            offset += count;
            used += count;
            if (used == from.size()) {
                ++piece;
                used = 0;
            }
        }
    };
    for (const TextChange& change : changes) {
        take(change.offset, true);
        if (!change.added.empty())
            result.push_back({0, 0, change.added});
        take(change.offset + change.removed, false);
    }
    std::size_t end = 0;
    for (const Piece& each : pieces_)
        end += each.size();
    take(end, true);
    pieces_ = std::move(result);
}

std::string PieceTable::text() const {
    std::string text;
    for (const Piece& piece : pieces_) {
        text += old_.substr(piece.length != 0 ? piece.begin : 0, piece.length);
        text += piece.added;
    }
    return text;
}

std::vector<TextChange> PieceTable::changes() const {
    std::vector<TextChange> changes;
    std::size_t end = 0; // of the old text that is dealt with
    std::string added;
    const auto closeAt = [&](std::size_t begin) {
        if (begin != end || !added.empty())
            changes.push_back({end, begin - end, std::exchange(added, {})});
    };
    for (const Piece& piece : pieces_) {
        added += piece.added;
        if (piece.length == 0)
            continue;
        closeAt(piece.begin);
        end = piece.begin + piece.length;
    }
    closeAt(old_.size());
    return changes;
}

std::size_t PieceTable::oldOffset(std::size_t offset) const noexcept {
    std::size_t old = 0;
    for (const Piece& piece : pieces_) {
        if (piece.length != 0 && offset < piece.length)
            return piece.begin + offset;
        old = piece.length != 0 ? piece.begin + piece.length : old;
        if (offset < piece.size())
            return old;
        offset -= piece.size();
    }
    return old_.size();
}

} // namespace vor::velmo_sdk::impl

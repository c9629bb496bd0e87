#include "impl/Edit.h"

#include "impl/edit/PieceTable.h"
#include "impl/edit/SingleEdit.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

// The positions of some offsets, in order.
std::vector<TextPosition> positionsOf(std::string_view text, std::vector<std::size_t> offsets) {
    std::ranges::sort(offsets);
    std::vector<TextPosition> positions;
    std::size_t lineBegin = 0;
    i32 line = 1;
    for (const std::size_t offset : offsets) {
        for (std::size_t end = text.find('\n', lineBegin); end < offset; end = text.find('\n', lineBegin)) {
            lineBegin = end + 1;
            ++line;
        }
        positions.push_back({line, static_cast<i32>(offset - lineBegin + 1)});
    }
    return positions;
}

} // namespace

EditResult editVrn(const String& text, std::span<const Edit> edits, const EditOptions& options) {
    PieceTable table(text);
    for (std::size_t i = 0; i < edits.size(); ++i) {
        try {
            table.apply(SingleEdit(std::string_view(table.text()), options).make(edits[i]));
        } catch (Refused& refused) {
            for (std::size_t& place : refused.places)
                place = table.oldOffset(place);
            return {{}, EditRefusal{i, refused.reason, positionsOf(text, std::move(refused.places))}};
        }
    }
    return {table.changes()};
}

std::string changedText(std::string_view text, std::span<const TextChange> changes) {
    std::string result;
    std::size_t end = 0;
    for (const TextChange& change : changes) {
        result += text.substr(end, change.offset - end);
        result += change.added;
        end = change.offset + change.removed;
    }
    return result += text.substr(end);
}

} // namespace vor::velmo_sdk::impl

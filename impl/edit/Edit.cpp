#include "impl/Edit.h"

#include "impl/edit/Lines.h"
#include "impl/edit/PieceTable.h"
#include "impl/edit/SingleEdit.h"

namespace vor::velmo_sdk::impl {

static std::unique_ptr<EditableText> readForEdits(const String& text, const EditOptions& options) {
    auto read = std::make_unique<EditableText>(text, options);
    if (const std::vector<Finding>& fatal = read->statements.fatal(); !fatal.empty())
        throw Refused{String::format(refusals::unreadable, fatal.front().text.buf()),
                      Lines(text).offsetOf(fatal.front().position)};
    return read;
}

EditResult editVrn(const String& text, std::span<const Edit> edits, const EditOptions& options) {
    PieceTable table(text);
    std::unique_ptr<EditableText> current; // what the edits so far have led to
    for (std::size_t i = 0; i < edits.size(); ++i) {
        try {
            if (i == 0)
                current = readForEdits(text, options);
            SingleEdit::Made made = SingleEdit(*current, options).make(edits[i], i + 1 == edits.size());
            table.apply(made.changes);
            current = std::move(made.text);
        } catch (Refused& refused) {
            for (std::size_t& place : refused.places)
                place = table.oldOffset(place);
            return {{}, EditRefusal{i, refused.reason, Lines(text).positionsOf(std::move(refused.places))}};
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

// editVrn: changes a VRN text where an edit concerns it, and nowhere else.
//
//     const Edit edits[] = {Edit::set("cam1.fov", "50"), Edit::rename("cam1", "main_camera")};
//     const EditResult result = editVrn(text, edits);
//     if (result.refusal)
//         std::cerr << result.refusal->reason << '\n';
//     else
//         text = changedText(text, result.changes);
//
// Either all edits are made, in order, or nothing changes. Afterwards the scene of the text differs in what the edits
// ask for, and in nothing else: the new text is read and compared with a scene that was changed in the same way. An
// edit that would change the meaning of other statements is refused, and so is one that would add a diagnostic.
// Comments, layout and the spelling of everything else stay.
//
// The text must be one that the reader reads to its end; diagnostics that do not end it are allowed. The texts are
// borrowed for the duration of the call. Calls share no state and may run in parallel.
#pragma once

#include "scene/Scene.h"
#include "scene/core/Export.h"
#include "scene/core/Log.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

// One edit. Paths are those of statements, with the name of the node.
struct Edit {
    enum class Kind { Set, Link, Add, Rename, Remove };
    Kind kind = Kind::Set;
    String target;  // the path, node, or type of the node
    String value{}; // the value, source of the link, name of the node, or new name

    // Sets an input to a value or a node, spelled as after `=` in a statement. The last assignment of the input is
    // changed; if there is none, one is added after the last statement of the node. A value of another type is
    // converted as by the reader, if that loses nothing, and spelled in the type of the input.
    [[nodiscard]] static Edit set(String path, String value) { return {Kind::Set, std::move(path), std::move(value)}; }
    // Connects an input to `node.output`, or to nothing if the source is `null`.
    [[nodiscard]] static Edit link(String path, String source) {
        return {Kind::Link, std::move(path), std::move(source)};
    }
    // Adds a node at the end of the text; of type `define`, a definition.
    [[nodiscard]] static Edit add(String type, String name) { return {Kind::Add, std::move(type), std::move(name)}; }
    // Renames a node and all that names it. Renaming a definition renames the type of its nodes.
    [[nodiscard]] static Edit rename(String node, String newName) {
        return {Kind::Rename, std::move(node), std::move(newName)};
    }
    // Removes a node that no other refers to, or an input with everything below it. Of an array, only the last element
    // can be removed. An object or array that only its last member created disappears with that.
    [[nodiscard]] static Edit remove(String nodeOrPath) { return {Kind::Remove, std::move(nodeOrPath)}; }
};

// Replaces `removed` bytes at an offset of the old text.
struct TextChange {
    u64 offset = 0;
    u64 removed = 0;
    std::string added{};
    friend bool operator==(const TextChange&, const TextChange&) = default;
};

// Why an edit is not made, and the statements or names of the old text that prevent it.
struct EditRefusal {
    std::size_t edit = 0; // its index
    String reason;
    std::vector<TextPosition> places{}; // of first characters
};

struct EditResult {
    std::vector<TextChange> changes; // in order, without overlaps; empty if an edit is refused
    std::optional<EditRefusal> refusal{};
};

// How the text is read.
struct EditOptions {
    std::shared_ptr<const Catalogue> catalogue{}; // may be null
    SceneLimits limits{};
};

// Takes the time of reading the text once, and once more for each edit; and the memory of two scenes. Throws std::bad_alloc.
[[nodiscard]] VRN_API EditResult editVrn(const String& text, std::span<const Edit> edits,
                                         const EditOptions& options = {});

// The text after the changes.
[[nodiscard]] VRN_API std::string changedText(std::string_view text, std::span<const TextChange> changes);

} // namespace vor::velmo_sdk::impl

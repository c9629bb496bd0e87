// An edit of a text either is refused or changes its scene as the scene itself would be changed, keeps all comments and
// adds no diagnostics. Renaming a node back restores the text. Edits made together are those made one after the other.
//
// An input is a line of decisions, then the text.
#include "impl/Edit.h"
#include "scene/Walk.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/SameScene.h"

#include <algorithm>
#include <optional>

using namespace vrn::fuzz;

namespace {

constexpr const char* names[] = {"a", "b", "c", "fresh", "null", "no name"};
constexpr const char* values[] = {"1", "2.5", "-7u", "true", "\"text; # \"",   "vec3(1, 2, 3)", "rgba(1 0 0)", "null",
                                  "a", "b",   "{}",  "[]",   "float[2] {1 2}", "byte[1] {255}", "1; t x",      "1 #"};
constexpr const char* sources[] = {"a.out", "b.out[0]", "null", "a", ".b.out", "c.x; t y"};
constexpr const char* steps[] = {"", "", "", ".fresh", "[*]", "[1]", " . fresh . x", "[0].x"};
constexpr const char* types[] = {"t", "a", "define", "remove", "with"};

// Reads a text and counts its diagnostics; nullopt if it is not read to its end.
std::optional<std::size_t> read(Scene& scene, const String& text) {
    limit(scene);
    std::size_t count = 0;
    const ScopedLogSink sink([&](const LogRecord&) { ++count; }, Notices::Yes);
    try {
        return parseString(&scene, text) ? std::optional(count) : std::nullopt;
    } catch (const ReadError&) {
        return std::nullopt;
    }
}

// The names of all nodes and the paths of all inputs.
std::vector<String> targetsOf(const Scene& scene) {
    std::vector<String> targets;
    for (const Node& node : scene.nodes()) {
        targets.push_back(node.name());
        forEachInput(node, [&](const Input& input) { targets.push_back(input.label()); });
    }
    return targets;
}

template <class Items> String oneOf(const Items& items, Bytes& decisions) {
    return items[decisions.below(std::size(items))];
}

Edit editOf(const std::vector<String>& targets, Bytes& decisions) {
    const u8 kind = decisions.byte();
    const String target = targets.empty() ? String("a") : targets[decisions.below(targets.size())];
    const String node = target.substring(0, std::min(target.view().find('.'), target.len()));
    const String path = (target == node ? target + ".x" : target) + oneOf(steps, decisions);
    switch (kind % 5) {
    case 0:
        return Edit::set(path, oneOf(values, decisions));
    case 1:
        return Edit::link(path, oneOf(sources, decisions));
    case 2:
        return Edit::add(oneOf(types, decisions), oneOf(names, decisions));
    case 3:
        return Edit::rename(node, oneOf(names, decisions));
    default:
        return Edit::remove(kind < 128 ? target : node);
    }
}

// Changes the scene itself. Removing inputs is checked separately, because parents may disappear.
void change(Scene& scene, const Edit& edit) {
    switch (edit.kind) {
    case Edit::Kind::Set:
        require(read(scene, edit.target + "=" + edit.value + ";") == 0U, "a value is accepted");
        return;
    case Edit::Kind::Link:
        require(read(scene, edit.target + "|=" + edit.value + ";") == 0U, "a link is accepted");
        return;
    case Edit::Kind::Add:
        require(read(scene, edit.target + " " + edit.value + ";") == 0U, "a node is accepted");
        return;
    case Edit::Kind::Rename:
        require(scene.renameNode(edit.target, edit.value), "a node can be renamed");
        return;
    case Edit::Kind::Remove:
        require(scene.removeNode(edit.target), "a node can be removed");
        return;
    }
}

EditOptions limits() {
    Scene scene;
    limit(scene);
    return {.catalogue = nullptr, .limits = scene.limits()};
}

String changed(const String& text, const std::vector<TextChange>& changes) {
    u64 end = 0;
    for (const TextChange& each : changes) {
        require(each.offset >= end && each.removed <= text.len() - each.offset, "changes are in order and in the text");
        end = each.offset + each.removed;
    }
    return std::string_view(changedText(text, changes));
}

// How many inputs a scene has, and how many of them are below a path.
struct Census {
    std::size_t all = 0;
    std::size_t below = 0;
};
Census censusOf(const Scene& scene, const String& path) {
    Census census;
    for (const String& each : targetsOf(scene)) {
        ++census.all;
        const bool isBelow =
            each.startsWith(path) && (each.len() == path.len() || each[path.len()] == '.' || each[path.len()] == '[');
        census.below += isBelow ? 1U : 0U;
    }
    return census;
}

void checkRemovedInput(const Scene& before, const Scene& after, const String& path) {
    const Census old = censusOf(before, path);
    const Census now = censusOf(after, path);
    require(old.below != 0 && now.below == 0, "the input is removed");
    const auto parents =
        static_cast<std::size_t>(std::ranges::count_if(path.view(), [](char c) { return c == '.' || c == '['; }));
    require(now.all + old.below <= old.all && now.all + old.below + parents > old.all, "others stay");
    require(std::ranges::equal(before.fileComments(), after.fileComments()), "comments stay");
}

void check(const String& text, const String& newText, const Edit& edit) {
    Scene before;
    Scene after;
    const auto diagnostics = read(before, text);
    const auto newDiagnostics = read(after, newText);
    require(diagnostics && newDiagnostics && *newDiagnostics <= *diagnostics, "there are no new diagnostics");
    if (edit.kind == Edit::Kind::Remove && edit.target.contains("."))
        return checkRemovedInput(before, after, edit.target);
    change(before, edit);
    if (const std::string found = vrn::test::firstDifference(before, after); !found.empty())
        fail(found + "\n" + newText.buf());
    if (edit.kind != Edit::Kind::Rename)
        return;
    const EditResult back = editVrn(newText, std::vector{Edit::rename(edit.value, edit.target)}, limits());
    // An earlier node of the old name, which a statement removes, keeps the name in use.
    require(back.refusal ? newText.contains("remove", true) : changed(newText, back.changes) == text,
            "renaming back restores the text");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input = asText(data, size);
    const std::size_t line = std::min(input.find('\n'), input.size());
    Bytes decisions(input.substr(0, line));
    const String text = input.substr(std::min(line + 1, input.size()));
    std::vector<Edit> edits;
    String current = text;
    for (int i = 0; i < 3 && !decisions.isEmpty(); ++i) {
        Scene scene;
        (void)read(scene, current);
        const Edit edit = editOf(targetsOf(scene), decisions);
        const EditResult result = editVrn(current, std::vector{edit}, limits());
        if (result.refusal) {
            require(result.changes.empty() && !result.refusal->reason.isEmpty(), "a refusal has a reason");
            continue;
        }
        const String next = changed(current, result.changes);
        check(current, next, edit);
        edits.push_back(edit);
        current = next;
    }
    const EditResult together = editVrn(text, edits, limits());
    require(!together.refusal && changed(text, together.changes) == current, "edits together are those in turn");
    return 0;
}

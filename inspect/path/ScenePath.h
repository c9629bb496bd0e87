// Paths that select inputs of a scene: `box.points[0:10]`, `mesh*.material`, `*.uvsets[*].name`.
//
//     const ScenePath path = parsePath("*.fov");
//     forEachMatch(scene, path, [&](const PathMatch& match) { fovs.push_back(match.input->value().asReal()); });
//
//     path  ::= name ( '.' name | '[' index ']' )*
//     index ::= number | number? ':' number? | '*'
//
// In a name, `*` matches any characters and `?` a single one. Indices count from 0, negative ones from the end; `a:b`
// is the slice from a up to, and without, b.
//
// A path owns its text and depends on no scene: parse it once and use it for any number of scenes, on several threads.
// Matches point into the scene. A pattern takes time linear in the names that it is compared with, everything else one
// lookup a part.
#pragma once

#include "scene/Scene.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vrn::inspect {

struct PathPart {
    std::string name;       // empty for an index or slice
    bool isPattern = false; // the name contains `*` or `?`
    bool isSlice = false;   // false: the single index `first`
    std::optional<vor::i64> first{};
    std::optional<vor::i64> last{}; // exclusive
    std::size_t end = 0;            // where the part ends in the text of the path

    [[nodiscard]] bool isRange() const noexcept { return name.empty(); }
};

struct ScenePath {
    std::string text;
    std::vector<PathPart> parts; // the first one is a name

    // Whether the path may match several inputs: it has a pattern, or a slice before its end.
    [[nodiscard]] bool isPattern() const noexcept;
};

// A malformed path; what() includes the position.
class PathError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws PathError.
[[nodiscard]] ScenePath parsePath(std::string_view text);

// A node, an input, or elements of an input.
struct PathMatch {
    enum class Kind { Node, NodeName, NodeType, Input, Count, Slice, BufferElement };
    Kind kind;
    const vor::velmo_sdk::impl::Node* node;
    const vor::velmo_sdk::impl::Input* input = nullptr;
    vor::u64 first = 0; // for Slice and BufferElement
    vor::u64 count = 0; // for Count, Slice and BufferElement
};

// The path that leads to this match alone: `box.points[0:10]`.
[[nodiscard]] std::string pathText(const PathMatch& match);

struct PathMatches {
    vor::u64 count = 0;
    std::size_t found = 0; // length of the longest prefix of the path that leads to something
};

// Calls `visit` for every match of a path, in the order of the scene. `NODE.name` and `NODE.type` are the name and type
// of the node, unless it has an input of that name; `.count` is the number of elements of a buffer or array. Exceptions
// of `visit` propagate.
PathMatches forEachMatch(const vor::velmo_sdk::impl::Scene& scene, const ScenePath& path,
                         const std::function<void(const PathMatch&)>& visit);

} // namespace vrn::inspect

// Paths that choose inputs of a scene: `box.points[0:10]`, `mesh*.material`, `*.uvsets[*].name`.
//
//     path  ::= name ( '.' name | '[' index ']' )*
//     index ::= number | number? ':' number? | '*'
//
// In a name, `*` stands for any characters and `?` for one. Indices count from 0, negative ones from the end; `a:b` are
// the elements from a up to, and without, b.
#pragma once

#include "scene/Scene.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vrn::cli {

struct PathPart {
    std::string name;       // or, if empty, a range
    bool isPattern = false; // of names
    bool isSlice = false;   // or one element, which is at `first`
    std::optional<vor::i64> first{};
    std::optional<vor::i64> last{}; // the one behind it
    std::size_t end = 0;            // of the part, in the path's text

    [[nodiscard]] bool isRange() const noexcept { return name.empty(); }
};

struct ScenePath {
    std::string text;
    std::vector<PathPart> parts; // the first one is a name

    // Whether it may lead to several places: it has a pattern, or a slice that is not its end.
    [[nodiscard]] bool isPattern() const noexcept;
};

// What is wrong with a path; what() says where.
class PathError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

[[nodiscard]] ScenePath parsePath(std::string_view text);

// One place of a scene.
struct PathMatch {
    enum class Kind { Node, NodeName, NodeType, Input, Slice, BufferElement };
    Kind kind;
    const vor::velmo_sdk::impl::Node* node;
    const vor::velmo_sdk::impl::Input* input = nullptr;
    vor::u64 first = 0; // of a slice of a buffer or array, or of an element of a buffer
    vor::u64 count = 0;
};

struct PathMatches {
    vor::u64 count = 0;
    std::size_t reached = 0; // how much of the path's text leads somewhere
};

// Calls `visit` for all that a path leads to, in the order of the scene. `NODE.name` and `NODE.type` are those of the
// node, unless it has such an input. Names without a pattern are looked up, not searched for.
PathMatches forEachMatch(const vor::velmo_sdk::impl::Scene& scene, const ScenePath& path,
                         const std::function<void(const PathMatch&)>& visit);

} // namespace vrn::cli

#include "inspect/path/ScenePath.h"

#include "inspect/path/Glob.h"
#include "inspect/path/Messages.h"

#include <algorithm>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

class PathParser {
public:
    explicit PathParser(std::string_view text) : text_(text) {}

    [[nodiscard]] ScenePath parse() {
        ScenePath path{.text = std::string(text_), .parts = {}};
        path.parts.push_back(name());
        while (at_ < text_.size()) {
            if (consume('.'))
                path.parts.push_back(name());
            else if (consume('['))
                path.parts.push_back(range());
            else
                fail(messages::expectedStep);
        }
        return path;
    }

private:
    [[noreturn]] void fail(const char* reason) const {
        throw PathError(
            String::format(messages::malformedPath, static_cast<unsigned long long>(at_) + 1, reason).buf());
    }

    [[nodiscard]] bool consume(char c) {
        if (at_ == text_.size() || text_[at_] != c)
            return false;
        ++at_;
        return true;
    }

    [[nodiscard]] PathPart name() {
        const std::size_t end = std::min(text_.find_first_of(".[]", at_), text_.size());
        if (end == at_)
            fail(messages::expectedName);
        PathPart part{.name = std::string(text_.substr(at_, end - at_)), .end = end};
        part.isPattern = isGlob(part.name);
        at_ = end;
        return part;
    }

    [[nodiscard]] PathPart range() {
        PathPart part;
        if (consume('*')) {
            part.isSlice = true;
        } else {
            part.first = number();
            part.isSlice = consume(':');
            if (part.isSlice)
                part.last = number();
            else if (!part.first)
                fail(messages::expectedIndex);
        }
        if (!consume(']'))
            fail(messages::expectedBracket);
        part.end = at_;
        return part;
    }

    [[nodiscard]] std::optional<i64> number() {
        const std::size_t digits = at_ + (at_ < text_.size() && text_[at_] == '-' ? 1 : 0);
        std::size_t end = digits;
        while (end < text_.size() && String::isDigit(text_[end]))
            ++end;
        if (end == at_)
            return std::nullopt;
        i64 value = 0;
        if (end == digits || !String::parse(text_.substr(at_, end - at_), value, String::Radix::Decimal))
            fail(messages::invalidIndex);
        at_ = end;
        return value;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

struct Range {
    u64 first = 0;
    u64 count = 0;
};

// The elements of `size` that an index or slice selects; indices outside are ignored.
Range resolve(const PathPart& part, u64 size) {
    const auto signedSize = static_cast<i64>(size); // sizes in a scene are far below the limit
    const auto fromStart = [&](i64 index) { return index < 0 ? index + signedSize : index; };
    if (!part.isSlice) {
        const i64 index = fromStart(*part.first);
        return index < 0 || index >= signedSize ? Range{} : Range{static_cast<u64>(index), 1};
    }
    const i64 first = std::clamp<i64>(fromStart(part.first.value_or(0)), 0, signedSize);
    const i64 last = std::clamp<i64>(fromStart(part.last.value_or(signedSize)), first, signedSize);
    return {static_cast<u64>(first), static_cast<u64>(last - first)};
}

class PathWalk {
public:
    PathWalk(const ScenePath& path, const std::function<void(const PathMatch&)>& visit)
        : parts_(path.parts), visit_(visit) {}

    [[nodiscard]] PathMatches walk(const Scene& scene) {
        const PathPart& part = parts_.front();
        if (!part.isPattern) {
            if (const Node* node = scene.findNode(std::string_view(part.name)))
                walk(*node);
            return matches_;
        }
        const auto nodes = scene.nodes();
        auto ahead = nodes.begin();
        for (int i = 0; i < nodesAhead && ahead != nodes.end(); ++i)
            ++ahead;
        for (const Node& node : nodes) {
            if (ahead != nodes.end())
                fetch(*ahead++);
            if (matchesGlob(node.key(), part.name))
                walk(node);
        }
        return matches_;
    }

private:
    // Siblings that are to be matched against a part.
    struct Level {
        std::span<const Input* const> remaining;
        std::size_t part;
    };

    // Waiting for the memory of the inputs takes most of the time of a walk through a large scene.
    static constexpr int nodesAhead = 8;

    void fetch(const Node& node) const {
        if (lastPlace_ >= node.inputs().size())
            return;
        const auto* input = reinterpret_cast<const std::byte*>(node.inputs()[lastPlace_]);
        __builtin_prefetch(input);
        __builtin_prefetch(input + sizeof(Input) - 1);
    }

    void walk(const Node& node) {
        reach(0);
        if (parts_.size() == 1)
            return report({.kind = PathMatch::Kind::Node, .node = &node});
        if (matchesProperty(node))
            return;
        open_.push_back({named(node, node.inputs(), parts_[1]), 1});
        while (!open_.empty()) {
            Level& level = open_.back();
            if (level.remaining.empty()) {
                open_.pop_back();
                continue;
            }
            const Input& input = *level.remaining.front();
            level.remaining = level.remaining.subspan(1);
            const std::size_t part = level.part;
            if (parts_[part].isPattern && !matchesGlob(input.key(), parts_[part].name))
                continue;
            reach(part);
            if (!matchesEnd(input, part))
                open_.push_back({below(input, parts_[part + 1]), part + 1});
        }
    }

    // Matches `.name` and `.type` of a node that has no such input.
    [[nodiscard]] bool matchesProperty(const Node& node) {
        const std::string& name = parts_[1].name;
        if (parts_.size() != 2 || (name != "name" && name != "type") || node.input(std::string_view(name)))
            return false;
        reach(1);
        report({.kind = name == "name" ? PathMatch::Kind::NodeName : PathMatch::Kind::NodeType, .node = &node});
        return true;
    }

    // Matches an input at which the path ends, or elements of it that are one match. Returns false if the path goes on.
    [[nodiscard]] bool matchesEnd(const Input& input, std::size_t part) {
        if (part + 1 == parts_.size()) {
            report({.kind = PathMatch::Kind::Input, .node = input.node(), .input = &input});
            return true;
        }
        const PathPart& last = parts_[part + 1];
        const bool isBuffer = input.type() == AttrType::Buffer;
        const bool isArray = input.type() == AttrType::Array;
        if (part + 2 != parts_.size() || !(isBuffer || isArray))
            return false;
        const u64 size = isBuffer ? input.value().count() : input.size();
        if (last.name == "count") {
            reach(part + 1);
            report({.kind = PathMatch::Kind::Count, .node = input.node(), .input = &input, .count = size});
            return true;
        }
        if (!last.isRange() || !(isBuffer || last.isSlice))
            return false;
        const auto [first, count] = resolve(last, size);
        if (last.isSlice || count != 0) {
            const auto kind = last.isSlice ? PathMatch::Kind::Slice : PathMatch::Kind::BufferElement;
            reach(part + 1);
            report({.kind = kind, .node = input.node(), .input = &input, .first = first, .count = count});
        }
        return true;
    }

    std::span<const Input* const> below(const Input& input, const PathPart& part) {
        const auto children = input.children();
        const bool isArray = input.type() == AttrType::Array;
        if (part.isRange() != isArray)
            return {};
        if (!isArray)
            return named(input, children, part);
        const auto [first, count] = resolve(part, children.size());
        return children.subspan(first, count);
    }

    // The candidates for the name of a part: all children for a pattern, else the one with that name.
    template <class Parent>
    std::span<const Input* const> named(const Parent& parent, std::span<const Input* const> children,
                                        const PathPart& part) {
        if (part.isPattern)
            return children;
        const Input* child = part.isRange() ? nullptr : childNamed(parent, children, part.name);
        return child ? children.subspan(child->index(), 1) : std::span<const Input* const>();
    }

    // Nodes of a type mostly have their inputs in the same order: the place of the last find saves a search, which
    // would wait for the memory of each input before.
    template <class Parent>
    const Input* childNamed(const Parent& parent, std::span<const Input* const> children, std::string_view name) {
        if (lastPlace_ < children.size() && children[lastPlace_]->key() == name)
            return children[lastPlace_];
        const Input* child = parent.input(name);
        if (child)
            lastPlace_ = child->index();
        return child;
    }

    void reach(std::size_t part) { matches_.found = std::max(matches_.found, parts_[part].end); }

    void report(const PathMatch& match) {
        ++matches_.count;
        visit_(match);
    }

    const std::vector<PathPart>& parts_;
    const std::function<void(const PathMatch&)>& visit_;
    std::vector<Level> open_; // empty between nodes
    std::size_t lastPlace_ = 0;
    PathMatches matches_;
};

} // namespace

bool ScenePath::isPattern() const noexcept {
    return std::ranges::any_of(
        parts, [&](const PathPart& part) { return part.isPattern || (part.isSlice && &part != &parts.back()); });
}

std::string pathText(const PathMatch& match) {
    std::string text(match.input ? match.input->label().view() : match.node->name().view());
    const auto index = [](u64 i) { return std::to_string(i); };
    switch (match.kind) {
    case PathMatch::Kind::Node:
    case PathMatch::Kind::Input:
        break;
    case PathMatch::Kind::NodeName:
        return text + ".name";
    case PathMatch::Kind::NodeType:
        return text + ".type";
    case PathMatch::Kind::Count:
        return text + ".count";
    case PathMatch::Kind::Slice:
        return text + '[' + index(match.first) + ':' + index(match.first + match.count) + ']';
    case PathMatch::Kind::BufferElement:
        return text + '[' + index(match.first) + ']';
    }
    return text;
}

ScenePath parsePath(std::string_view text) { return PathParser(text).parse(); }

PathMatches forEachMatch(const Scene& scene, const ScenePath& path,
                         const std::function<void(const PathMatch&)>& visit) {
    return PathWalk(path, visit).walk(scene);
}

} // namespace vrn::inspect

#include "inspect/diff/SceneDifference.h"

#include "inspect/diff/InputDifference.h"

#include <vector>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

std::string text(const String& string) { return std::string(string.view()); }

class SceneComparison {
public:
    SceneComparison(double tolerance, const DifferenceSink& sink) : tolerance_(tolerance), sink_(sink) {}

    void compare(const Scene& before, const Scene& after) {
        compareHeaders(before, after);
        compareOrder(before, after);
        for (const Node& node : before.nodes()) {
            path_ = text(node.name());
            if (const Node* counterpart = after.findNode(node.name()))
                compare(node, *counterpart);
            else
                sink_({.change = Change::Removed, .aspect = Aspect::Node, .path = path_, .node = &node});
        }
        for (const Node& node : after.nodes())
            if (!before.findNode(node.name()))
                sink_({.change = Change::Added, .aspect = Aspect::Node, .path = node.name().view(), .node = &node});
    }

private:
    // Siblings that are being compared.
    struct Level {
        const Input* before; // the parents; null for inputs of a node
        const Input* after;
        std::span<const Input* const> remaining; // in the first scene
        std::span<const Input* const> all;       // in the second scene
        std::size_t pathLength;

        [[nodiscard]] bool areElements() const { return before && before->type() == AttrType::Array; }
    };

    void changed(Aspect aspect, std::string before, std::string after) {
        sink_({.change = Change::Changed,
               .aspect = aspect,
               .path = path_,
               .before = std::move(before),
               .after = std::move(after)});
    }

    void compareHeaders(const Scene& before, const Scene& after) {
        if (before.fileVersion() != after.fileVersion())
            changed(Aspect::Version, std::to_string(before.fileVersion()), std::to_string(after.fileVersion()));
        if (before.fileTime() != after.fileTime())
            changed(Aspect::Time, text(before.fileTime()), text(after.fileTime()));
        const auto comment = [](const StringVector& comments, std::size_t i) {
            return i < comments.size() ? std::optional(text(comments[i])) : std::nullopt;
        };
        const StringVector& old = before.fileComments();
        const StringVector& current = after.fileComments();
        std::size_t same = 0;
        while (same < old.size() && same < current.size() && old[same] == current[same])
            ++same;
        if (same < std::max(old.size(), current.size()))
            sink_({.change = Change::Changed,
                   .aspect = Aspect::Comments,
                   .before = comment(old, same),
                   .after = comment(current, same),
                   .index = same});
    }

    // Compares the order of the nodes that both scenes have.
    void compareOrder(const Scene& before, const Scene& after) {
        auto current = after.nodes().begin();
        for (const Node& node : before.nodes()) {
            if (!after.findNode(node.name()))
                continue;
            while (!before.findNode(current->name()))
                ++current;
            if (current->name() != node.name())
                return changed(Aspect::NodeOrder, text(node.name()), text(current->name()));
            ++current;
        }
    }

    void compare(const Node& before, const Node& after) {
        if (before.type() != after.type())
            changed(Aspect::Type, text(before.type()), text(after.type()));
        if (before.isDefinition() != after.isDefinition()) {
            const auto kind = [](const Node& node) { return node.isDefinition() ? "definition" : "node"; };
            changed(Aspect::Definition, kind(before), kind(after));
        }
        compareInputsOf(before, after);
    }

    void compareInputsOf(const Node& before, const Node& after) {
        std::vector<Level> open{{nullptr, nullptr, before.inputs(), after.inputs(), path_.size()}};
        while (!open.empty()) {
            Level& level = open.back();
            path_.resize(level.pathLength);
            if (level.remaining.empty()) {
                reportAdded(level, before);
                open.pop_back();
                continue;
            }
            const Input& input = *level.remaining.front();
            level.remaining = level.remaining.subspan(1);
            appendName(input);
            const Input* counterpart = find(input, level.after, after);
            if (!counterpart)
                reportRemoved(level, input);
            else if (compareInputs(input, *counterpart, path_, tolerance_, sink_))
                open.push_back({&input, counterpart, input.children(), counterpart->children(), path_.size()});
        }
    }

    // The counterpart of an input in the other scene, or null.
    static const Input* find(const Input& input, const Input* parent, const Node& node) {
        if (!parent)
            return node.input(input.key());
        return input.isElement() ? parent->element(input.index()) : parent->input(input.key());
    }

    // Removed and added elements are not reported one by one: the count of the array is.
    void reportRemoved(const Level& level, const Input& input) const {
        if (!level.areElements())
            sink_({.change = Change::Removed, .aspect = Aspect::Input, .path = path_, .inputBefore = &input});
    }

    void reportAdded(const Level& level, const Node& before) {
        if (level.areElements())
            return;
        for (const Input* input : level.all) {
            if (find(*input, level.before, before))
                continue;
            appendName(*input);
            sink_({.change = Change::Added, .aspect = Aspect::Input, .path = path_, .inputAfter = input});
            path_.resize(level.pathLength);
        }
    }

    void appendName(const Input& input) {
        const String name = input.name();
        path_ += input.isElement() ? '[' : '.';
        path_ += name.view();
        if (input.isElement())
            path_ += ']';
    }

    double tolerance_;
    const DifferenceSink& sink_;
    std::string path_; // of the node or input being compared
};

} // namespace

void compareScenes(const Scene& before, const Scene& after, double tolerance, const DifferenceSink& sink) {
    SceneComparison(tolerance, sink).compare(before, after);
}

} // namespace vrn::inspect

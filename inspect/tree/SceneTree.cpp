#include "inspect/tree/SceneTree.h"

#include "inspect/path/Glob.h"
#include "inspect/value/ValueText.h"
#include "scene/InputCursor.h"

#include <vector>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

// Draws one scene. Keeps a stack of open branches, because inputs can be nested too deep for recursion.
class TreeDrawing {
public:
    TreeDrawing(const TreeOptions& options, const Style& style, const TextSink& sink)
        : options_(options), style_(style), block_(sink) {}

    void draw(const Scene& scene) {
        std::vector<const Node*> nodes;
        for (const Node& node : scene.nodes())
            if (matchesGlob(node.name(), options_.name) && matchesGlob(node.type(), options_.type))
                nodes.push_back(&node);
        for (const Node* node : nodes) {
            const bool isLast = node == nodes.back();
            line(isLast, style_.name(escapedShort(node->name())) + " (" + style_.type(typeText(*node)) + ')');
            if (options_.depth > 0)
                drawInputs(node->inputs(), isLast);
        }
        block_.flush();
    }

private:
    void drawInputs(std::span<const Input* const> inputs, bool isLastNode) {
        indent(isLastNode);
        for (InputCursor cursor(inputs); !cursor.isDone();) {
            if (isAtEnd(cursor)) {
                leave(cursor);
                continue;
            }
            const bool isLast = cursor.isLast();
            line(isLast, style_.name(inputName(*cursor)) + ": " + describe(*cursor, style_));
            if (cursor.depth() + 1 < options_.depth && cursor->size() != 0) {
                indent(isLast);
                cursor.enter();
            } else {
                cursor.next();
            }
        }
        outdent();
    }

    // Only the first elements of an array are drawn.
    [[nodiscard]] bool isAtEnd(const InputCursor& cursor) const {
        return cursor.isAtEnd() || (cursor->isElement() && cursor->index() == options_.elements);
    }

    void leave(InputCursor& cursor) {
        if (!cursor.isAtEnd())
            line(true, style_.faint("... " + std::to_string(cursor.parent()->size() - options_.elements) + " more"));
        outdent();
        cursor.leave();
        cursor.next();
    }

    void indent(bool isParentLast) { indent_ += isParentLast ? blank : bar; }

    void outdent() { indent_.resize(indent_.size() - (indent_.ends_with(bar) ? bar : blank).size()); }

    static std::string inputName(const Input& input) {
        const std::string name = escapedShort(input.name());
        return input.isElement() ? '[' + name + ']' : name;
    }

    void line(bool isLast, const std::string& text) {
        block_.append(style_.faint(indent_ + (isLast ? "└── " : "├── ")) + text + '\n');
    }

    static constexpr std::string_view blank = "    ";
    static constexpr std::string_view bar = "│   ";
    const TreeOptions& options_;
    const Style& style_;
    TextBlock block_;
    std::string indent_;
};

} // namespace

void writeTree(const Scene& scene, const TreeOptions& options, const Style& style, const TextSink& sink) {
    TreeDrawing(options, style, sink).draw(scene);
}

} // namespace vrn::inspect

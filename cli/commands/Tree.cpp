#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/query/Glob.h"
#include "cli/query/ValueText.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Style.h"
#include "scene/InputCursor.h"
#include "scene/core/TextEncoding.h"

#include <memory>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct TreeOptions {
    SceneArguments scenes;
    std::string name = "*";
    std::string type = "*";
    u64 depth = 64;
    u64 elements = 10;
    std::string color = "auto";
};

// Draws one scene. Keeps a stack of open branches, because inputs can be nested too deep for recursion.
class TreeDrawing {
public:
    TreeDrawing(const TreeOptions& options, const Style& style) : options_(options), style_(style) {}

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

    void line(bool isLast, const std::string& text) const {
        print(style_.faint(indent_ + (isLast ? "└── " : "├── ")) + text + '\n');
    }

    static constexpr std::string_view blank = "    ";
    static constexpr std::string_view bar = "│   ";
    const TreeOptions& options_;
    const Style& style_;
    std::string indent_;
};

int tree(const TreeOptions& options) {
    const Style style(options.color);
    const int status = forEachScene(options.scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.isWhole())
            return;
        printError(file.diagnosticsText());
        print(std::string(escapeForTerminal(file.displayName()).view()) + '\n');
        TreeDrawing(options, style).draw(scene);
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command treeCommand() {
    const auto options = std::make_shared<TreeOptions>();
    Command command{.name = "tree",
                    .what = "Draw nodes and their inputs as a tree",
                    .example = "vrn tree --type 'mesh*' --depth 1 scene.vrn",
                    .details = "In a PATTERN, * matches any characters and ? a single one. Quote it for the shell.",
                    .run = [options] { return tree(*options); }};
    addSceneFiles(command.options, options->scenes);
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--name",
                               .help = "Draw only nodes whose name matches",
                               .target = &options->name,
                               .value = "PATTERN"});
    command.options.push_back({.names = "--type",
                               .help = "Draw only nodes whose type matches",
                               .target = &options->type,
                               .value = "PATTERN"});
    command.options.push_back({.names = "--depth",
                               .help = "Draw this many levels of inputs; 0 for nodes only",
                               .target = &options->depth,
                               .value = "COUNT",
                               .max = 1000});
    command.options.push_back({.names = "--elements",
                               .help = "Draw at most this many elements of each array",
                               .target = &options->elements,
                               .value = "COUNT"});
    addColorOption(command.options, options->color);
    return command;
}

} // namespace vrn::cli

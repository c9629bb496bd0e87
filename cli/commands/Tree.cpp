#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/query/Glob.h"
#include "cli/query/ValueText.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Style.h"
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
    // Siblings that are being drawn.
    struct Branch {
        std::span<const Input* const> remaining;
        u64 hidden;               // the number of elements after them that are not drawn
        std::size_t parentIndent; // the length of the parent's indentation
    };

    void drawInputs(std::span<const Input* const> inputs, bool isLastNode) {
        std::vector<Branch> open;
        enter(open, {inputs, 0, 0}, isLastNode);
        while (!open.empty()) {
            Branch& top = open.back();
            if (top.remaining.empty()) {
                if (top.hidden != 0)
                    line(true, style_.faint("... " + std::to_string(top.hidden) + " more"));
                indent_.resize(top.parentIndent);
                open.pop_back();
                continue;
            }
            const Input& input = *top.remaining.front();
            top.remaining = top.remaining.subspan(1);
            const bool isLast = top.remaining.empty() && top.hidden == 0;
            line(isLast, style_.name(inputName(input)) + ": " + describe(input, style_));
            if (open.size() < options_.depth && input.size() != 0)
                enter(open, childrenOf(input), isLast);
        }
    }

    [[nodiscard]] Branch childrenOf(const Input& input) const {
        const auto children = input.children();
        const bool isArray = input.type() == velmo_sdk::AttrType::Array;
        const u64 shown = isArray ? std::min<u64>(children.size(), options_.elements) : children.size();
        return {children.first(shown), children.size() - shown, indent_.size()};
    }

    void enter(std::vector<Branch>& open, Branch branch, bool isParentLast) {
        open.push_back(branch);
        indent_ += isParentLast ? "    " : "│   ";
    }

    static std::string inputName(const Input& input) {
        const std::string name = escapedShort(input.name());
        return input.isElement() ? '[' + name + ']' : name;
    }

    void line(bool isLast, const std::string& text) const {
        print(style_.faint(indent_ + (isLast ? "└── " : "├── ")) + text + '\n');
    }

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

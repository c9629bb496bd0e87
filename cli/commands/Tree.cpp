#include "cli/commands/Commands.h"
#include "cli/files/SceneArguments.h"
#include "cli/terminal/Colour.h"
#include "cli/terminal/Console.h"
#include "inspect/tree/SceneTree.h"
#include "scene/core/TextEncoding.h"

#include <memory>

namespace vrn::cli {

using namespace vor;

namespace {

struct TreeArguments {
    SceneArguments scenes;
    inspect::TreeOptions tree;
    std::string color = "auto";
};

int tree(const TreeArguments& arguments) {
    const inspect::Style style(wantsColour(arguments.color));
    const int status = forEachScene(arguments.scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.diagnosis().isWhole())
            return;
        printError(diagnosticsText(file));
        print(std::string(escapeForTerminal(file.diagnosis().displayName()).view()) + '\n');
        writeTree(scene, arguments.tree, style, print);
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command treeCommand() {
    const auto arguments = std::make_shared<TreeArguments>();
    Command command{.name = "tree",
                    .what = "Draw nodes and their inputs as a tree",
                    .example = "vrn tree --type 'mesh*' --depth 1 scene.vrn",
                    .details = "In a PATTERN, * matches any characters and ? a single one. Quote it for the shell.",
                    .run = [arguments] { return tree(*arguments); }};
    addSceneFiles(command.options, arguments->scenes);
    addReadingOptions(command.options, arguments->scenes);
    command.options.push_back({.names = "--name",
                               .help = "Draw only nodes whose name matches",
                               .target = &arguments->tree.name,
                               .value = "PATTERN"});
    command.options.push_back({.names = "--type",
                               .help = "Draw only nodes whose type matches",
                               .target = &arguments->tree.type,
                               .value = "PATTERN"});
    command.options.push_back({.names = "--depth",
                               .help = "Draw this many levels of inputs; 0 for nodes only",
                               .target = &arguments->tree.depth,
                               .value = "COUNT",
                               .max = 1000});
    command.options.push_back({.names = "--elements",
                               .help = "Draw at most this many elements of each array",
                               .target = &arguments->tree.elements,
                               .value = "COUNT"});
    addColorOption(command.options, arguments->color);
    return command;
}

} // namespace vrn::cli

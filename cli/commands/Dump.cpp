#include "cli/commands/Commands.h"
#include "cli/files/SceneArguments.h"
#include "cli/terminal/Console.h"
#include "scene/SceneJson.h"

#include <memory>

namespace vrn::cli {

using namespace vor;

namespace {

struct DumpOptions {
    SceneArguments scenes;
    bool isCompact = false;
    bool isDataOmitted = false;
};

int dump(const DumpOptions& options) {
    const int status = forEachScene(options.scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.diagnosis().isWhole())
            return;
        printError(diagnosticsText(file));
        writeSceneJson(scene, {.isCompact = options.isCompact, .hasBufferData = !options.isDataOmitted}, print);
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command dumpCommand() {
    const auto options = std::make_shared<DumpOptions>();
    Command command{.name = "dump",
                    .what = "Print scenes as JSON",
                    .example = "vrn dump --compact scene.vrn | jq '.nodes[].name'",
                    .run = [options] { return dump(*options); }};
    addSceneFiles(command.options, options->scenes);
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--compact", .help = "Print one line a file", .target = &options->isCompact});
    command.options.push_back(
        {.names = "--no-data", .help = "Omit the numbers of buffers", .target = &options->isDataOmitted});
    return command;
}

} // namespace vrn::cli

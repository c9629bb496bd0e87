#include "cli/commands/Commands.h"
#include "cli/diff/DifferenceText.h"
#include "cli/diff/SceneDifference.h"
#include "cli/files/SceneFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Style.h"

#include <cmath>
#include <memory>

namespace vrn::cli {

using namespace vor;

namespace {

struct DiffOptions {
    SceneArguments scenes; // the files apart
    std::string before;
    std::string after;
    double tolerance = 0;
    std::string format = "text";
    std::string color = "auto";
};

// Hands a scene that is fit to be compared to `visit`, and says what is wrong with any other.
int withScene(const DiffOptions& options, const std::string& name, const std::function<int(const Scene&)>& visit) {
    SceneArguments scenes = options.scenes;
    scenes.files = {name};
    int status = exitTrouble;
    const int deserved = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.isWhole())
            return;
        printError(file.diagnosticsText());
        if (!file.hasErrors())
            status = visit(scene);
    });
    return deserved == exitOk ? status : exitTrouble;
}

int printDifferences(const DiffOptions& options, const Scene& before, const Scene& after) {
    const Style style(options.color);
    bool areDifferent = false;
    compareScenes(before, after, options.tolerance, [&](const Difference& difference) {
        areDifferent = true;
        if (options.format == "json")
            printJson(difference);
        else
            print(differenceLine(difference, style));
    });
    return areDifferent ? exitErrors : exitOk;
}

int diff(const DiffOptions& options) {
    if (std::isnan(options.tolerance)) {
        complain("--tolerance", "expected a distance, found nan");
        return exitTrouble;
    }
    if (options.before == "-" && options.after == "-") {
        complain("-", "standard input can be only one of both scenes; name a file for the other");
        return exitTrouble;
    }
    const int status = withScene(options, options.before, [&](const Scene& before) {
        return withScene(options, options.after,
                         [&](const Scene& after) { return printDifferences(options, before, after); });
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command diffCommand() {
    const auto options = std::make_shared<DiffOptions>();
    Command command{.name = "diff",
                    .what = "Say what is different between two scenes",
                    .example = "vrn diff --tolerance 0.001 before.vrn after.vrn",
                    .run = [options] { return diff(*options); },
                    .exitStatuses = "0 the scenes are the same, 1 they differ, 2 wrong usage, a file that\n"
                                    "cannot be opened or read, or a scene with an error.\n"};
    command.options.push_back({.names = "BEFORE",
                               .help = "The one scene; - is standard input",
                               .target = &options->before,
                               .completion = Completion::Scene,
                               .isRequired = true});
    command.options.push_back({.names = "AFTER",
                               .help = "The other scene",
                               .target = &options->after,
                               .completion = Completion::Scene,
                               .isRequired = true});
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--tolerance",
                               .help = "How far apart real numbers may be and yet be equal",
                               .target = &options->tolerance,
                               .value = "DISTANCE"});
    command.options.push_back({.names = "--format",
                               .help = "How to say it: text, or json (one line a difference)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = {"text", "json"}});
    addColorOption(command.options, options->color);
    return command;
}

} // namespace vrn::cli

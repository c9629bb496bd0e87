#include "cli/commands/Commands.h"
#include "cli/files/SceneArguments.h"
#include "cli/terminal/Colour.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "inspect/diff/DifferenceText.h"
#include "inspect/diff/SceneDifference.h"

#include <cmath>
#include <memory>

namespace vrn::cli {

using namespace vor;

namespace {

struct DiffOptions {
    SceneArguments scenes; // without files
    std::string before;
    std::string after;
    double tolerance = 0;
    std::string format = "text";
    std::string color = "auto";
};

// Reads a scene and returns the status of `visit`; exitTrouble, with a report, if it cannot be read or has errors.
int withScene(const DiffOptions& options, const std::string& name, const std::function<int(const Scene&)>& visit) {
    SceneArguments scenes = options.scenes;
    scenes.files = {name};
    int status = exitTrouble;
    const int readStatus = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.diagnosis().isWhole())
            return;
        printError(diagnosticsText(file));
        if (!file.diagnosis().hasErrors())
            status = visit(scene);
    });
    return readStatus == exitOk ? status : exitTrouble;
}

int printDifferences(const DiffOptions& options, const Scene& before, const Scene& after) {
    const inspect::Style style(wantsColour(options.color));
    bool areDifferent = false;
    inspect::compareScenes(before, after, options.tolerance, [&](const inspect::Difference& difference) {
        areDifferent = true;
        print(options.format == "json" ? differenceJson(difference) : differenceLine(difference, style));
    });
    return areDifferent ? exitErrors : exitOk;
}

int diff(const DiffOptions& options) {
    if (std::isnan(options.tolerance)) {
        complain("--tolerance", messages::notDistance);
        return exitTrouble;
    }
    if (options.before == "-" && options.after == "-") {
        complain("-", messages::bothStandardInput);
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
                    .what = "Compare two scenes",
                    .example = "vrn diff --tolerance 0.001 before.vrn after.vrn",
                    .run = [options] { return diff(*options); },
                    .exitStatuses = "0 the scenes are equal, 1 they differ, 2 invalid arguments, a file that\n"
                                    "cannot be opened or read, or a scene with errors.\n"};
    command.options.push_back({.names = "BEFORE",
                               .help = "The first scene; - is standard input",
                               .target = &options->before,
                               .completion = Completion::Scene,
                               .isRequired = true});
    command.options.push_back({.names = "AFTER",
                               .help = "The second scene; - is standard input",
                               .target = &options->after,
                               .completion = Completion::Scene,
                               .isRequired = true});
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--tolerance",
                               .help = "Treat real numbers as equal up to this difference",
                               .target = &options->tolerance,
                               .value = "DISTANCE"});
    command.options.push_back({.names = "--format",
                               .help = "Set the format of the report: text, or json (one line a difference)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = {"text", "json"}});
    addColorOption(command.options, options->color);
    return command;
}

} // namespace vrn::cli

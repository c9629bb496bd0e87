#include "check/SceneCheck.h"
#include "cli/commands/Commands.h"
#include "cli/files/CatalogueFile.h"
#include "cli/files/SceneArguments.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "inspect/report/Report.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace vrn::cli {

using namespace vor;

namespace {

struct CheckOptions {
    SceneArguments scenes;
    std::string format = "text";
    bool areNoticesHidden = false;
    bool areWarningsErrors = false;
    std::vector<std::string> ignored; // kinds of findings
    bool isPedantic = false;
};

bool hasRulesWithoutCatalogue(const CheckOptions& options) {
    return (options.isPedantic || !options.ignored.empty()) && !loadCatalogue(options.scenes.types);
}

int checkFiles(const CheckOptions& options) {
    if (hasRulesWithoutCatalogue(options)) {
        printError(std::string("vrn: ") + messages::rulesWithoutCatalogue + '\n');
        return exitTrouble;
    }
    const check::Options rules{.ignored = {options.ignored.begin(), options.ignored.end()},
                               .isPedantic = options.isPedantic};
    const std::unique_ptr<inspect::Report> report = inspect::reportNamed(options.format)(print);
    inspect::Totals totals;
    const auto visit = [&](SceneFile& file, const Scene& scene) {
        file.check(scene, rules);
        return [&totals, found = totalsOf(file.diagnosis()),
                finish =
                    report->needsLines() ? report->about(file.diagnosisWithLines()) : report->about(file.diagnosis())] {
            if (finish)
                finish();
            totals += found;
        };
    };
    int status = visitScenes(options.scenes, visit, options.areNoticesHidden ? Notices::No : Notices::Yes);
    if (options.areWarningsErrors && totals.warnings != 0)
        status = std::max<int>(status, exitErrors);
    report->end(totals);
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command checkCommand() {
    const auto options = std::make_shared<CheckOptions>();
    Command command{.name = "check",
                    .what = "Report errors and warnings in scenes, with their positions",
                    .example = "vrn check --werror examples/*.vrn\n"
                               "vrn check --types builtin --ignore missingFile scene.vrn\n"
                               "vrn check --jobs 0 --format sarif scenes > check.sarif\n"
                               "generate-scene | vrn check --format json -",
                    .run = [options] { return checkFiles(*options); }};
    options->scenes.wantsSources = true;
    addSceneFilesAndFolders(command.options, options->scenes);
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--format",
                               .help =
                                   "Set the format of the report: text, json (one line a file), sarif (a SARIF 2.1.0 "
                                   "log), or github (workflow annotations)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = inspect::reportNames()});
    command.options.push_back({.names = "--no-lint",
                               .help = "Omit the warnings about input that is valid but probably unintended",
                               .target = &options->areNoticesHidden});
    command.options.push_back({.names = "--ignore",
                               .help = "Omit the warnings by the catalogue that have this name; may be repeated",
                               .target = &options->ignored,
                               .value = "NAME",
                               .choices = check::kindNames()});
    command.options.push_back({.names = "--pedantic",
                               .help = "Also warn about nodes that nothing uses, by the catalogue",
                               .target = &options->isPedantic});
    command.options.push_back(
        {.names = "--werror", .help = "Treat warnings as errors", .target = &options->areWarningsErrors});
    return command;
}

} // namespace vrn::cli

#include "check/SceneCheck.h"
#include "cli/commands/Commands.h"
#include "cli/files/CatalogueFile.h"
#include "cli/files/SceneFile.h"
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"

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

struct Format {
    const char* name;
    std::unique_ptr<Report> (*make)();
};
constexpr Format formats[] = {
    {"text", makeTextReport}, {"json", makeJsonReport}, {"sarif", makeSarifReport}, {"github", makeGithubReport}};

Totals totalsOf(const SceneFile& file) {
    if (!file.isWhole())
        return {.unreadable = 1};
    return {.files = 1, .errors = file.count(LogSeverity::Error), .warnings = file.warnings()};
}

void add(const Totals& ofFile, Totals& totals) {
    totals.files += ofFile.files;
    totals.errors += ofFile.errors;
    totals.warnings += ofFile.warnings;
    totals.unreadable += ofFile.unreadable;
}

// Adds what the catalogue finds wrong with the scene. The rest of a file that could be read only in part is unknown, so
// that most findings would be false.
void checkByCatalogue(SceneFile& file, const Scene& scene, const CheckOptions& options) {
    if (!scene.catalogue() || !file.sources() || !file.isOk())
        return;
    file.drop("enumWarning"); // the check finds these strings, too
    const check::Options rules{.ignored = {options.ignored.begin(), options.ignored.end()},
                               .isPedantic = options.isPedantic,
                               .folder = file.folder()};
    for (const LogRecord& finding : check::checkScene(scene, *scene.catalogue(), *file.sources(), rules))
        file.add(finding);
}

bool hasRulesWithoutCatalogue(const CheckOptions& options) {
    return (options.isPedantic || !options.ignored.empty()) && !loadCatalogue(options.scenes.types);
}

int checkFiles(const CheckOptions& options) {
    if (hasRulesWithoutCatalogue(options)) {
        printError(std::string("vrn: ") + messages::rulesWithoutCatalogue + '\n');
        return exitTrouble;
    }
    const std::unique_ptr<Report> report = std::ranges::find(formats, options.format, &Format::name)->make();
    Totals totals;
    const auto visit = [&](SceneFile& file, const Scene& scene) {
        checkByCatalogue(file, scene, options);
        return [&totals, found = totalsOf(file), report = report->about(file)] {
            if (report)
                report();
            add(found, totals);
        };
    };
    int status = visitScenes(options.scenes, visit, options.areNoticesHidden ? Notices::No : Notices::Yes);
    if (options.areWarningsErrors && totals.warnings != 0)
        status = std::max<int>(status, exitErrors);
    report->end(totals);
    return finishOutput() ? status : exitTrouble;
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    std::ranges::transform(formats, std::back_inserter(names), &Format::name);
    return names;
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
                               .choices = formatNames()});
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

#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"

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

int check(const CheckOptions& options) {
    const std::unique_ptr<Report> report = std::ranges::find(formats, options.format, &Format::name)->make();
    Totals totals;
    const auto visit = [&](const SceneFile& file, const Scene&) {
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
                               "vrn check --jobs 0 --format sarif scenes > check.sarif\n"
                               "generate-scene | vrn check --format json -",
                    .run = [options] { return check(*options); }};
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
    command.options.push_back(
        {.names = "--werror", .help = "Treat warnings as errors", .target = &options->areWarningsErrors});
    return command;
}

} // namespace vrn::cli

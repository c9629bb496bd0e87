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
    bool isWithoutLint = false; // or says what the reader takes without a word, too
    bool isWarningError = false;
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

void add(const Totals& some, Totals& all) {
    all.files += some.files;
    all.errors += some.errors;
    all.warnings += some.warnings;
    all.unreadable += some.unreadable;
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
    int status = visitScenes(options.scenes, visit, options.isWithoutLint ? Notices::No : Notices::Yes);
    if (options.isWarningError && totals.warnings != 0)
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
                    .what = "Say what is wrong with scenes, and where",
                    .example = "vrn check --werror examples/*.vrn\n"
                               "vrn check --jobs 0 --format sarif scenes > check.sarif\n"
                               "generate-scene | vrn check --format json -",
                    .run = [options] { return check(*options); }};
    addSceneFilesAndFolders(command.options, options->scenes);
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--format",
                               .help = "How to say it: text, json (one line a file), sarif (one SARIF 2.1.0 log), or "
                                       "github (annotations of a workflow)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = formatNames()});
    command.options.push_back({.names = "--no-lint",
                               .help = "Say nothing of what the reader takes without a word, but may not be meant",
                               .target = &options->isWithoutLint});
    command.options.push_back(
        {.names = "--werror", .help = "Let warnings fail the check, too", .target = &options->isWarningError});
    return command;
}

} // namespace vrn::cli

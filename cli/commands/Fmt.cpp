#include "cli/commands/Commands.h"
#include "cli/files/InOrder.h"
#include "cli/files/SceneFolders.h"
#include "cli/files/TextFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "cli/terminal/Progress.h"
#include "impl/Formatter.h"
#include "scene/core/OutputFile.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct FmtOptions {
    std::vector<std::string> files;
    u64 column = FormatOptions().column;
    u64 jobs = 1;
    bool isCheck = false;
    bool isInPlace = false;
    bool isQuiet = false; // hides the progress
};

// The result of one file.
struct Outcome {
    int status = exitOk;
    std::string output{}; // for standard output
    std::string errors{}; // for standard error
};

Outcome trouble(const String& name, const String& reason) {
    return {.status = exitTrouble, .errors = std::string(complaintText(name, reason).view())};
}

Outcome refuse(const TextFile& file, const FormatError& error) {
    const String name = escapeForTerminal(file.displayName());
    const String text = String::format(messages::notFormatted, name.buf(), error.position().line,
                                       error.position().column, escapeForTerminal(error.what()).buf());
    return {.status = exitErrors, .errors = std::string(text.view())};
}

Outcome replace(const TextFile& file, const std::string& formatted) {
    try {
        OutputFile output(file.argument().buf());
        output.write(formatted);
        output.commit();
        return {};
    } catch (const std::system_error& error) {
        return trouble(file.displayName(), strerrordesc_np(error.code().value()));
    }
}

Outcome deliver(const TextFile& file, std::string formatted, const FmtOptions& options) {
    const bool isSame = formatted == file.text().view();
    if (options.isCheck && !isSame)
        return {.status = exitErrors, .output = std::string(escapeForTerminal(file.displayName()).view()) + '\n'};
    if (options.isCheck || (options.isInPlace && isSame && !file.isStandardInput()))
        return {};
    if (options.isInPlace && !file.isStandardInput())
        return replace(file, formatted);
    return {.output = std::move(formatted)};
}

// Estimates the progress in the input by the size of the output.
std::string format(const TextFile& file, const FmtOptions& options, Progress& progress) {
    std::string text;
    u64 remaining = file.text().len();
    formatVrn(file.text(), {.column = static_cast<u32>(options.column)}, [&](std::string_view piece) {
        text += piece;
        const u64 done = std::min<u64>(piece.size(), remaining);
        progress.advance(done);
        remaining -= done;
    });
    progress.skip(remaining);
    return text;
}

Outcome outcomeOf(const NamedScene& scene, const FmtOptions& options, Progress& progress) {
    const String name = std::string_view(scene.name);
    if (!scene.trouble.isEmpty())
        return trouble(name, scene.trouble);
    try {
        const TextFile file(name);
        if (!file.error().isEmpty())
            return trouble(file.displayName(), file.error());
        try {
            return deliver(file, format(file, options, progress), options);
        } catch (const FormatError& error) {
            return refuse(file, error);
        }
    } catch (const std::bad_alloc&) {
        return trouble(name, messages::outOfMemory);
    }
}

int fmt(const FmtOptions& options) {
    if (options.isCheck && options.isInPlace) {
        printError(std::string("vrn: ") + messages::checkInPlace + '\n');
        return exitTrouble;
    }
    const std::vector<NamedScene> scenes = expandFolders(options.files);
    std::vector<std::string> names;
    names.reserve(scenes.size());
    for (const NamedScene& scene : scenes)
        names.push_back(scene.name);
    Progress progress(names, options.isQuiet);
    int status = exitOk;
    runInOrder(scenes.size(), options.jobs, [&](std::size_t i, const Turn& turn) -> Finish {
        if (scenes[i].name == "-")
            turn.await();
        return [&status, outcome = outcomeOf(scenes[i], options, progress)] {
            printError(outcome.errors);
            print(outcome.output);
            status = std::max(status, outcome.status);
        };
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command fmtCommand() {
    const auto options = std::make_shared<FmtOptions>();
    Command command{.name = "fmt",
                    .what = "Format scenes: change white space only, keep tokens and comments",
                    .example = "vrn fmt --in-place scene.vrn\nvrn fmt --check scenes/*.vrn",
                    .details = "Without --check and --in-place, print the formatted text.",
                    .run = [options] { return fmt(*options); },
                    .exitStatuses =
                        "0 all files were formatted, or with --check need no change, 1 a file needs a change or\n"
                        "cannot be formatted, 2 invalid arguments or a file that cannot be read or written.\n"};
    command.options.push_back({.names = "FILE",
                               .help = "The files to format, or folders to search for *.vrn files; - is standard input",
                               .target = &options->files,
                               .completion = Completion::Scene,
                               .isRequired = true});
    command.options.push_back(
        {.names = "--check",
         .help = "Change nothing; print the names of the files that would change, and exit with 1 if there are any",
         .target = &options->isCheck});
    command.options.push_back({.names = "-i,--in-place",
                               .help = "Replace each file that changes, atomically",
                               .target = &options->isInPlace});
    command.options.push_back({.names = "-j,--jobs",
                               .help = "Format this many files in parallel; 0 for one a processor",
                               .target = &options->jobs,
                               .value = "COUNT",
                               .max = 256});
    command.options.push_back({.names = "--column",
                               .help = "Wrap lists at this column; 0 for no wrapping",
                               .target = &options->column,
                               .value = "COLUMN",
                               .max = 1000000});
    command.options.push_back(
        {.names = "--quiet", .help = "Do not show progress on the terminal", .target = &options->isQuiet});
    return command;
}

} // namespace vrn::cli

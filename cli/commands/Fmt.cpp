#include "cli/commands/Commands.h"
#include "cli/files/InOrder.h"
#include "cli/files/SceneFolders.h"
#include "cli/files/TextFile.h"
#include "cli/terminal/Console.h"
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
    bool isQuiet = false; // or shows how far the formatting has come
};

// What became of one file: what to say of it, and its exit status.
struct Outcome {
    int status = exitOk;
    std::string output{};
    std::string complaint{};
};

Outcome trouble(const String& name, const String& reason) {
    return {.status = exitTrouble, .complaint = std::string(complaintText(name, reason).view())};
}

// A text that cannot be formatted is an error in it, and it stays as it is.
Outcome refused(const TextFile& file, const FormatError& error) {
    const String name = escapeForTerminal(file.displayName());
    const String text = String::format("%s:%d:%d: error: %s; not formatted\n", name.buf(), error.position().line,
                                       error.position().column, escapeForTerminal(error.what()).buf());
    return {.status = exitErrors, .complaint = std::string(text.view())};
}

Outcome replaced(const TextFile& file, const std::string& formatted) {
    try {
        OutputFile output(file.argument().buf());
        output.write(formatted);
        output.commit();
        return {};
    } catch (const std::system_error& error) {
        return trouble(file.displayName(), strerrordesc_np(error.code().value()));
    }
}

Outcome used(const TextFile& file, std::string formatted, const FmtOptions& options) {
    const bool isSame = formatted == file.text().view();
    if (options.isCheck && !isSame)
        return {.status = exitErrors, .output = std::string(escapeForTerminal(file.displayName()).view()) + '\n'};
    if (options.isCheck || (options.isInPlace && isSame && !file.isStandardInput()))
        return {};
    if (options.isInPlace && !file.isStandardInput())
        return replaced(file, formatted);
    return {.output = std::move(formatted)};
}

// As much has been done of the file as there is of its result.
std::string format(const TextFile& file, const FmtOptions& options, Progress& progress) {
    std::string text;
    u64 left = file.text().len();
    formatVrn(file.text(), {.column = static_cast<u32>(options.column)}, [&](std::string_view piece) {
        text += piece;
        const u64 done = std::min<u64>(piece.size(), left);
        progress.advance(done);
        left -= done;
    });
    progress.leaveOut(left);
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
            return used(file, format(file, options, progress), options);
        } catch (const FormatError& error) {
            return refused(file, error);
        }
    } catch (const std::bad_alloc&) {
        return trouble(name, "out of memory");
    }
}

int fmt(const FmtOptions& options) {
    if (options.isCheck && options.isInPlace) {
        printError("vrn: --check and --in-place exclude each other\n");
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
            printError(outcome.complaint);
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
                    .what = "Lay texts out anew: the same tokens and comments, other blanks",
                    .example = "vrn fmt --in-place scene.vrn\nvrn fmt --check scenes/*.vrn",
                    .details = "Without options the formatted text goes to standard output.",
                    .run = [options] { return fmt(*options); },
                    .exitStatuses = "0 all formatted, or with --check nothing would change, 1 a text would change or\n"
                                    "cannot be formatted, 2 wrong usage or a file that cannot be read or written.\n"};
    command.options.push_back(
        {.names = "FILE",
         .help = "Texts to format, or folders with scenes (*.vrn) in or below them; - is standard input",
         .target = &options->files,
         .completion = Completion::Scene,
         .isRequired = true});
    command.options.push_back(
        {.names = "--check",
         .help = "Change nothing; name the files that would change, and exit with 1 if there are any",
         .target = &options->isCheck});
    command.options.push_back({.names = "-i,--in-place",
                               .help = "Replace each file that changes, as a whole or not at all",
                               .target = &options->isInPlace});
    command.options.push_back({.names = "-j,--jobs",
                               .help = "How many files to format at once; 0: one a processor",
                               .target = &options->jobs,
                               .value = "COUNT",
                               .most = 256});
    command.options.push_back({.names = "--column",
                               .help = "Wrap lists before this column; 0 wraps none",
                               .target = &options->column,
                               .value = "COLUMN",
                               .most = 1000000});
    command.options.push_back({.names = "--quiet",
                               .help = "Do not show on the terminal how far the formatting has come",
                               .target = &options->isQuiet});
    return command;
}

} // namespace vrn::cli

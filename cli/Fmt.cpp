#include "cli/AtomicFile.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/TextFile.h"
#include "impl/Formatter.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <system_error>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct FmtOptions {
    std::vector<std::string> files;
    u64 column = FormatOptions().column;
    bool isCheck = false;
    bool isInPlace = false;
};

// A text that cannot be formatted is an error in it, and it stays as it is.
int refuse(const TextFile& file, const FormatError& error) {
    printError(String::format("%s:%d:%d: error: %s; not formatted\n", escapeForTerminal(file.displayName()).buf(),
                              error.position().line, error.position().column, escapeForTerminal(error.what()).buf()));
    return exitErrors;
}

int use(const TextFile& file, const std::string& formatted, const FmtOptions& options) {
    const bool isSame = formatted == file.text().view();
    if (options.isCheck) {
        if (!isSame)
            print(std::string(escapeForTerminal(file.displayName()).view()) + '\n');
        return isSame ? exitOk : exitErrors;
    }
    if (!options.isInPlace || file.isStandardInput()) {
        print(formatted);
        return exitOk;
    }
    if (isSame)
        return exitOk;
    try {
        AtomicFile output(file.argument().buf());
        output.write(formatted);
        output.commit();
    } catch (const std::system_error& error) {
        complain(file.displayName(), strerrordesc_np(error.code().value()));
        return exitTrouble;
    }
    return exitOk;
}

int fmt(const std::string& name, const FmtOptions& options) {
    const TextFile file{String(std::string_view(name))};
    if (!file.error().isEmpty()) {
        complain(file.displayName(), file.error());
        return exitTrouble;
    }
    std::string formatted;
    try {
        formatVrn(file.text(), {.column = static_cast<u32>(options.column)},
                  [&](std::string_view piece) { formatted += piece; });
    } catch (const FormatError& error) {
        return refuse(file, error);
    }
    return use(file, formatted, options);
}

int fmt(const FmtOptions& options) {
    if (options.isCheck && options.isInPlace) {
        printError("vrn: --check and --in-place exclude each other\n");
        return exitTrouble;
    }
    int status = exitOk;
    for (const std::string& name : options.files)
        status = std::max(status, fmt(name, options));
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command fmtCommand() {
    const auto options = std::make_shared<FmtOptions>();
    Command command{.name = "fmt",
                    .what = "Lay texts out anew: the same tokens and comments, other blanks",
                    .example = "vrn fmt --in-place scene.vrn\nvrn fmt --check scenes/*.vrn",
                    .details = "Without options the formatted text goes to standard output.",
                    .run = [options] { return fmt(*options); }};
    command.options.push_back({.names = "FILE",
                               .help = "Texts to format; - is standard input",
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
    command.options.push_back({.names = "--column",
                               .help = "Wrap lists before this column; 0 wraps none",
                               .target = &options->column,
                               .value = "COLUMN",
                               .most = 1000000});
    return command;
}

} // namespace vrn::cli

#include "convert/Convert.h"

#include "cli/commands/Commands.h"
#include "cli/files/CatalogueFile.h"
#include "cli/files/Isolated.h"
#include "cli/files/SceneFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "cli/terminal/Progress.h"
#include "scene/core/OutputFile.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

namespace vrn::cli {

using namespace vor;
using convert::Losses;

namespace {

struct ConvertOptions {
    std::string from;
    std::string to;
    convert::WriteOptions write;
    SceneArguments scenes;
};

// Losses are always reported: nothing may go missing silently.
void report(const Losses& losses, const std::string& file) {
    std::string text;
    for (const convert::Loss& loss : losses.all())
        text += String::format(messages::lost, escapeForTerminal(file).buf(), escapeForTerminal(loss.what).buf(),
                               static_cast<unsigned long long>(loss.count), loss.count == 1 ? "" : "first ",
                               escapeForTerminal(loss.first).buf())
                    .view();
    printError(text);
}

// Runs `act` and reports its errors. Returns exitErrors for bad content, exitTrouble for a file that cannot be
// accessed.
int attempt(auto act) {
    try {
        act();
        return exitOk;
    } catch (const convert::ContentError& error) {
        complain(std::string_view(error.path()), error.what());
        return exitErrors;
    } catch (const convert::FileError& error) {
        complain(std::string_view(error.path()), error.what());
    } catch (const OutputFileError& error) {
        complain(std::string_view(error.path()), strerrordesc_np(error.code().value()));
    }
    return exitTrouble;
}

// Reports the losses also if nothing is left to be written: they are the reason.
void write(const Scene& scene, Losses& losses, const ConvertOptions& options, const convert::TexturePaths& paths) {
    try {
        const Progress progress("Writing", options.scenes.isQuiet);
        convert::writeScene(scene, options.to, losses, paths, options.write);
    } catch (const convert::ContentError&) {
        report(losses, options.to);
        throw;
    }
    report(losses, options.to);
}

// Assimp reports its progress for some formats only.
void read(const ConvertOptions& options, Scene& scene, Losses& losses) {
    Progress progress({options.from}, options.scenes.isQuiet);
    progress.startTimer();
    std::error_code error;
    const auto size = static_cast<double>(std::filesystem::file_size(options.from, error));
    u64 reported = 0;
    convert::readModel(options.from, scene, losses, {options.from, options.to}, [&](double part) {
        const u64 bytes = error ? 0 : std::max(reported, static_cast<u64>(part * size));
        progress.advance(bytes - std::exchange(reported, bytes));
    });
}

int convertText(const ConvertOptions& options) {
    SceneArguments scenes = options.scenes;
    scenes.files = {options.from};
    int written = exitOk;
    const int read = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.isWhole())
            return;
        printError(file.diagnosticsText());
        if (file.hasErrors())
            return complain(file.displayName(), messages::notConverted);
        Losses losses;
        written = attempt([&] { write(scene, losses, options, {options.from, options.to}); });
    });
    return std::max(read, written);
}

// Assimp can crash on malformed files, so it runs in a child process.
int convertModel(const ConvertOptions& options) {
    const auto catalogue = loadCatalogue(options.scenes.types);
    const Ending ending = runIsolated([&] {
        Scene scene;
        scene.setCatalogue(catalogue);
        scene.setLimits(options.scenes.limits);
        return attempt([&] {
            Losses losses;
            read(options, scene, losses);
            write(scene, losses, options, {});
        });
    });
    if (ending.signal == SIGKILL) {
        complain(std::string_view(options.from), messages::readerKilled);
        return exitTrouble;
    }
    if (ending.signal != 0)
        complain(std::string_view(options.from), messages::readerCrashed);
    return ending.status;
}

int refuse(const std::string& file, const String& reason) {
    complain(std::string_view(file), reason);
    return exitTrouble;
}

int run(const ConvertOptions& options) {
    if (!convert::canWrite(options.to))
        return refuse(options.to, String::format(messages::unwritableExtension, convert::writableExtensions().c_str()));
    if (options.write.isAscii && !convert::hasTwoForms(options.to))
        return refuse(options.to, messages::onlyOneForm);
    if (convert::extensionOf(options.from) == ".vrn")
        return convertText(options);
    if (!convert::canRead(options.from))
        return refuse(options.from,
                      String::format(messages::unreadableExtension, (".vrn " + convert::readableExtensions()).c_str()));
    return convertModel(options);
}

} // namespace

Command convertCommand() {
    const auto options = std::make_shared<ConvertOptions>();
    Command command{.name = "convert",
                    .what = "Convert a scene from or to another format",
                    .example = "vrn convert examples/character.vrn character.glb\nvrn convert chair.obj chair.json",
                    .run = [options] { return run(*options); }};
    command.options.push_back(
        {.names = "IN",
         .help = "The file to read: .vrn, .gltf, .glb, .obj, .ply, .stl, .fbx, .dae and many more",
         .target = &options->from,
         .completion = Completion::File,
         .isRequired = true});
    command.options.push_back({.names = "OUT",
                               .help = "The file to write: " + convert::writableExtensions(),
                               .target = &options->to,
                               .completion = Completion::File,
                               .isRequired = true});
    command.options.push_back({.names = "--ascii",
                               .help = "Write .ply and .stl as text instead of binary",
                               .target = &options->write.isAscii});
    addReadingOptions(command.options, options->scenes);
    command.details =
        "The file extensions determine the formats. What the format of OUT cannot express is omitted and\n"
        "reported, one line a kind. A scene with errors is not converted.";
    return command;
}

} // namespace vrn::cli

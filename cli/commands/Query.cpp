#include "cli/commands/Commands.h"
#include "cli/files/SceneArguments.h"
#include "cli/terminal/Colour.h"
#include "cli/terminal/Console.h"
#include "inspect/path/Answer.h"
#include "inspect/path/NotFound.h"
#include "inspect/path/ScenePath.h"

#include <algorithm>
#include <memory>

namespace vrn::cli {

using namespace vor;
using inspect::PathError;
using inspect::PathMatch;
using inspect::PathMatches;
using inspect::ScenePath;

namespace {

struct QueryOptions {
    SceneArguments scenes; // without the file
    std::string file;
    std::vector<std::string> paths;
    std::string format = "text";
};

// Prints the matches of one path. Returns false, and reports it, if there are none.
bool answer(const Scene& scene, const ScenePath& path, bool isJson) {
    const inspect::AnswerLayout layout{.isLabelled = path.isPattern(), .isEscaped = isOutputTerminal()};
    const PathMatches matches = forEachMatch(scene, path, [&](const PathMatch& match) {
        isJson ? writeAnswerJson(match, print) : writeAnswer(match, layout, print);
    });
    if (matches.count != 0)
        return true;
    complain(std::string_view(path.text), std::string_view(notFoundText(scene, path, matches)));
    return false;
}

int query(const QueryOptions& options) {
    std::vector<ScenePath> paths;
    for (const std::string& text : options.paths) {
        try {
            paths.push_back(inspect::parsePath(text));
        } catch (const PathError& error) {
            complain(std::string_view(text), error.what());
            return exitTrouble;
        }
    }
    SceneArguments scenes = options.scenes;
    scenes.files = {options.file};
    bool areFound = true;
    const int status = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.diagnosis().isWhole())
            return;
        printError(diagnosticsText(file));
        for (const ScenePath& path : paths)
            areFound = answer(scene, path, options.format == "json") && areFound;
    });
    if (!finishOutput())
        return exitTrouble;
    return std::max<int>(status, areFound ? exitOk : exitErrors);
}

constexpr const char* details =
    "A PATH is the name of a node, then .NAME for an input or member and [INDEX] for an element of an array or\n"
    "buffer. In names, * matches any characters and ? a single one. [-1] is the last element; [2:5], [2:], [:5]\n"
    "and [*] are slices. NODE.type and NODE.name are the type and name of the node. Quote paths for the shell.\n\n"
    "Print one value a line; if a path has a pattern, precede each value with its path and a tab.";

} // namespace

Command queryCommand() {
    const auto options = std::make_shared<QueryOptions>();
    Command command{.name = "query",
                    .what = "Print values by their paths",
                    .example = "vrn query scene.vrn cam1.fov 'box.points[0:10]' '*.type'",
                    .details = details,
                    .run = [options] { return query(*options); },
                    .exitStatuses =
                        "0 every path was found, 1 a path was not found, or the scene has errors,\n"
                        "2 invalid arguments, a malformed path, or a file that cannot be opened or read.\n"};
    command.options.push_back({.names = "FILE",
                               .help = "The scene to read; - is standard input",
                               .target = &options->file,
                               .completion = Completion::Scene,
                               .isRequired = true});
    command.options.push_back(
        {.names = "PATH", .help = "The paths of the values to print", .target = &options->paths, .isRequired = true});
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--format",
                               .help = "Set the format of the output: text, or json (one object a line)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = {"text", "json"}});
    return command;
}

} // namespace vrn::cli

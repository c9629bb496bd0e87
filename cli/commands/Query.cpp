#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/query/Answer.h"
#include "cli/query/ScenePath.h"
#include "cli/terminal/Console.h"

#include <algorithm>
#include <memory>

namespace vrn::cli {

using namespace vor;

namespace {

struct QueryOptions {
    SceneArguments scenes; // the file apart
    std::string file;
    std::vector<std::string> paths;
    std::string format = "text";
};

// Answers one path; false, with a complaint, if it leads nowhere.
bool answer(const Scene& scene, const ScenePath& path, bool isJson) {
    const bool isLabelled = path.isPattern();
    const PathMatches matches = forEachMatch(
        scene, path, [&](const PathMatch& match) { isJson ? printAnswerJson(match) : printAnswer(match, isLabelled); });
    if (matches.count != 0)
        return true;
    const String reached = std::string_view(path.text).substr(0, matches.reached);
    complain(std::string_view(path.text),
             reached.isEmpty() ? String("leads nowhere: there is no such node") : "leads only to " + reached);
    return false;
}

int query(const QueryOptions& options) {
    std::vector<ScenePath> paths;
    for (const std::string& text : options.paths) {
        try {
            paths.push_back(parsePath(text));
        } catch (const PathError& error) {
            complain(std::string_view(text), error.what());
            return exitTrouble;
        }
    }
    SceneArguments scenes = options.scenes;
    scenes.files = {options.file};
    bool areAnswered = true;
    const int status = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.isWhole())
            return;
        printError(file.diagnosticsText());
        for (const ScenePath& path : paths)
            areAnswered = answer(scene, path, options.format == "json") && areAnswered;
    });
    if (!finishOutput())
        return exitTrouble;
    return std::max<int>(status, areAnswered ? exitOk : exitErrors);
}

constexpr const char* details =
    "A PATH is a node's name, then .NAME for an input or a member and [INDEX] for an element of an array or\n"
    "buffer. In names * stands for any characters and ? for one; [-1] is the last element, [2:5], [2:], [:5]\n"
    "and [*] are several. NODE.type and NODE.name are those of the node. Quote paths for the shell.\n\n"
    "Prints one value a line: the value alone, or PATH, a tab and the value where a path has a pattern.";

} // namespace

Command queryCommand() {
    const auto options = std::make_shared<QueryOptions>();
    Command command{.name = "query",
                    .what = "Print values by their paths",
                    .example = "vrn query scene.vrn cam1.fov 'box.points[0:10]' '*.type'",
                    .details = details,
                    .run = [options] { return query(*options); },
                    .exitStatuses = "0 every path leads to a value, 1 one does not, or the scene has an "
                                    "error, 2 wrong\nusage, a malformed path, or a file that cannot be opened or "
                                    "read.\n"};
    command.options.push_back({.names = "FILE",
                               .help = "Scene to read; - is standard input",
                               .target = &options->file,
                               .completion = Completion::Scene,
                               .isRequired = true});
    command.options.push_back(
        {.names = "PATH", .help = "What to print", .target = &options->paths, .isRequired = true});
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--format",
                               .help = "How to print it: text, or json (one object a line)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = {"text", "json"}});
    return command;
}

} // namespace vrn::cli

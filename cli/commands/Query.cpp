#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/query/Answer.h"
#include "cli/query/ScenePath.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "scene/core/SimilarNames.h"

#include <algorithm>
#include <memory>
#include <set>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct QueryOptions {
    SceneArguments scenes; // without the file
    std::string file;
    std::vector<std::string> paths;
    std::string format = "text";
};

// The names that the part of a path that leads nowhere may stand for, as a question. `found` is the length of what
// leads to something.
std::string similarNames(const Scene& scene, const ScenePath& path, std::size_t found) {
    const auto missing = std::ranges::find_if(path.parts, [&](const PathPart& part) { return part.end > found; });
    if (missing == path.parts.end() || missing->isRange() || missing->isPattern)
        return {};
    SimilarNames similar(missing->name);
    if (missing == path.parts.begin()) {
        for (const Node& node : scene.nodes())
            similar.consider(node.name().view());
        return similar.question();
    }
    std::set<std::string, std::less<>> names; // many nodes have inputs of the same names
    const ScenePath before{.text = path.text.substr(0, found), .parts = {path.parts.begin(), missing}};
    forEachMatch(scene, before, [&](const PathMatch& match) {
        for (const Input* input : match.input ? match.input->children() : match.node->inputs())
            if (names.emplace(input->key().view()).second)
                similar.consider(input->key().view());
    });
    return similar.question();
}

// Prints the matches of one path. Returns false, and reports it, if there are none.
bool answer(const Scene& scene, const ScenePath& path, bool isJson) {
    const bool isLabelled = path.isPattern();
    const PathMatches matches = forEachMatch(
        scene, path, [&](const PathMatch& match) { isJson ? printAnswerJson(match) : printAnswer(match, isLabelled); });
    if (matches.count != 0)
        return true;
    const std::string found = path.text.substr(0, matches.found);
    const std::string similar = similarNames(scene, path, matches.found);
    complain(std::string_view(path.text),
             found.empty() ? String::format(messages::pathWithoutNode, similar.c_str())
                           : String::format(messages::pathWithoutEnd, found.c_str(), similar.c_str()));
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
    bool areFound = true;
    const int status = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.isWhole())
            return;
        printError(file.diagnosticsText());
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

#include "cli/commands/Commands.h"
#include "cli/files/SceneArguments.h"
#include "cli/graph/DotText.h"
#include "cli/graph/LinkGraph.h"
#include "cli/graph/Picture.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "inspect/text/Counted.h"
#include "scene/core/OutputFile.h"
#include "scene/core/SimilarNames.h"

#include <algorithm>
#include <memory>
#include <system_error>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;
using inspect::counted;

namespace {

struct GraphOptions {
    SceneArguments scenes; // without the file
    std::string file;
    std::string output;
    std::string around;
    u64 hops = 2;
};

// The largest graph that `dot` can lay out in a few seconds, and that people can read.
constexpr std::size_t maxNodes = 2000;
constexpr std::size_t maxLinks = 10'000;

// `dot`, `svg`, `png` or `pdf`; empty for any other file extension.
std::string formatOf(const std::string& output) {
    if (output.empty())
        return "dot";
    std::string ending = output.substr(std::min(output.rfind('.'), output.size()));
    std::ranges::transform(ending, ending.begin(), [](char c) { return String::lower(c); });
    for (const char* format : {"dot", "svg", "png", "pdf"})
        if (ending == std::string(".") + format)
            return format;
    return {};
}

void writeGraph(const LinkGraph& graph, const GraphOptions& options) {
    const std::string text = dotText(graph);
    if (options.output.empty())
        return print(text);
    OutputFile file(options.output);
    const std::string format = formatOf(options.output);
    if (format == "dot")
        file.write(text);
    else
        drawPicture(text, format, file.descriptor());
    file.commit();
}

bool isTooLarge(const LinkGraph& graph, const GraphOptions& options) {
    return formatOf(options.output) != "dot" && (graph.nodes.size() > maxNodes || graph.edges.size() > maxLinks);
}

int refuseLarge(const LinkGraph& graph, const GraphOptions& options) {
    complain(std::string_view(options.output),
             String::format(messages::pictureTooLarge, counted(graph.nodes.size(), "node").buf(),
                            counted(graph.edges.size(), "link").buf()));
    return exitTrouble;
}

int drawScene(const Scene& scene, const GraphOptions& options) {
    LinkGraph graph = linksOf(scene);
    if (!options.around.empty()) {
        const Node* centre = scene.findNode(std::string_view(options.around));
        if (!centre) {
            SimilarNames similar(options.around);
            for (const Node& node : scene.nodes())
                similar.consider(node.name().view());
            complain(std::string_view(options.around),
                     String::format(messages::noSuchNode, similar.question().c_str()));
            return exitTrouble;
        }
        graph = neighbourhood(graph, *centre, options.hops);
    }
    if (isTooLarge(graph, options))
        return refuseLarge(graph, options);
    try {
        writeGraph(graph, options);
    } catch (const PictureError& error) {
        complain(std::string_view(options.output), error.what());
        return exitTrouble;
    } catch (const std::system_error& error) {
        complain(std::string_view(options.output), std::string_view(error.code().message()));
        return exitTrouble;
    }
    return exitOk;
}

int graph(const GraphOptions& options) {
    if (options.around.empty() && options.hops != GraphOptions().hops) {
        printError(std::string("vrn: ") + messages::hopsAlone + '\n');
        return exitTrouble;
    }
    if (formatOf(options.output).empty()) {
        complain(std::string_view(options.output), messages::unknownPicture);
        return exitTrouble;
    }
    SceneArguments scenes = options.scenes;
    scenes.files = {options.file};
    int status = exitOk;
    const int readStatus = forEachScene(scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.diagnosis().isWhole())
            return;
        printError(diagnosticsText(file));
        status = drawScene(scene, options);
    });
    return finishOutput() ? std::max(status, readStatus) : exitTrouble;
}

} // namespace

Command graphCommand() {
    const auto options = std::make_shared<GraphOptions>();
    Command command{.name = "graph",
                    .what = "Draw the links between nodes",
                    .example =
                        "vrn graph -o scene.svg scene.vrn\nvrn graph --around cam1 --hops 1 scene.vrn | dot -Tsvg",
                    .details = "Pictures require the program dot of the Debian package graphviz.",
                    .run = [options] { return graph(*options); }};
    command.options.push_back({.names = "FILE",
                               .help = "The scene to read; - is standard input",
                               .target = &options->file,
                               .completion = Completion::Scene,
                               .isRequired = true});
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "-o,--output",
                               .help = "Write to this file, a .dot, .svg, .png or .pdf, instead of printing DOT",
                               .target = &options->output,
                               .value = "OUT",
                               .completion = Completion::File});
    command.options.push_back({.names = "--around",
                               .help = "Draw only this node and its neighbours",
                               .target = &options->around,
                               .value = "NODE"});
    command.options.push_back({.names = "--hops",
                               .help = "Draw neighbours up to this many links away, in either direction",
                               .target = &options->hops,
                               .value = "COUNT"});
    return command;
}

} // namespace vrn::cli

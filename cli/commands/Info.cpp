#include "cli/commands/Commands.h"
#include "cli/files/SceneFile.h"
#include "cli/terminal/Console.h"
#include "scene/Walk.h"
#include "scene/core/TextEncoding.h"

#include <map>
#include <memory>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

struct Summary {
    std::map<std::string, u64> nodesByType;
    u64 nodes = 0;
    u64 definitions = 0;
    u64 inputs = 0;
    u64 buffers = 0;
    u64 bufferElements = 0;
    u64 bufferBytes = 0;
    u64 connections = 0;
    u64 references = 0;
};

void add(const Input& input, Summary& summary) {
    ++summary.inputs;
    if (input.type() == AttrType::Buffer) {
        ++summary.buffers;
        summary.bufferElements += input.value().count();
        summary.bufferBytes += input.value().bytes().size();
    }
    summary.connections += input.connection() ? 1U : 0U;
    summary.references += input.nodeValue() ? 1U : 0U;
}

Summary summarise(const Scene& scene) {
    Summary summary;
    for (const Node& node : scene.nodes()) {
        ++(node.isDefinition() ? summary.definitions : summary.nodes);
        if (!node.isDefinition())
            ++summary.nodesByType[std::string(node.type().view())];
        forEachInput(node, [&](const Input& input) { add(input, summary); });
    }
    return summary;
}

std::string line(const char* label, const String& text) {
    return std::string(String::format("  %-12s %s\n", label, text.buf()).view());
}

std::string describe(const SceneFile& file, const Scene& scene) {
    const Summary summary = summarise(scene);
    std::string text(escapeForTerminal(file.displayName()).view());
    text += '\n';
    text += line("version", String(scene.fileVersion()));
    text += line("time", scene.fileTime().isEmpty() ? String("-") : escapeForTerminal(scene.fileTime()));
    text += line("comments", String(scene.fileComments().size()));
    text += line("definitions", String(summary.definitions));
    text += line("nodes", String(summary.nodes));
    for (const auto& [type, count] : summary.nodesByType)
        text += line("", escapeForTerminal(type) + ": " + String(count));
    text += line("inputs", String(summary.inputs));
    text += line("buffers", String::format("%llu (%s, %s)", static_cast<unsigned long long>(summary.buffers),
                                           counted(summary.bufferElements, "element").buf(),
                                           counted(summary.bufferBytes, "byte").buf()));
    text += line("links", counted(summary.connections, "connection") + ", " + counted(summary.references, "reference"));
    text += line("diagnostics", counted(file.count(LogSeverity::Error), "error") + ", " +
                                    counted(file.count(LogSeverity::Warning), "warning"));
    return text;
}

int info(const SceneArguments& scenes) {
    const int status = visitScenes(scenes, [](const SceneFile& file, const Scene& scene) -> Finish {
        if (!file.isWhole())
            return {};
        return [diagnostics = file.diagnosticsText(), description = describe(file, scene)] {
            printError(diagnostics);
            print(description);
        };
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command infoCommand() {
    const auto scenes = std::make_shared<SceneArguments>();
    Command command{.name = "info",
                    .what = "Summarise scenes",
                    .example = "vrn info examples/first_scene.vrn\nvrn info --jobs 4 examples",
                    .run = [scenes] { return info(*scenes); }};
    addSceneFilesAndFolders(command.options, *scenes);
    addReadingOptions(command.options, *scenes);
    return command;
}

} // namespace vrn::cli

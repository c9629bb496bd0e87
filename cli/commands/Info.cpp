#include "cli/commands/Commands.h"
#include "cli/files/SceneArguments.h"
#include "cli/terminal/Console.h"
#include "convert/Measure.h"
#include "inspect/summary/SceneSummary.h"
#include "inspect/text/Counted.h"
#include "scene/JsonWriter.h"
#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <memory>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;
using inspect::counted;

namespace {

using convert::Bounds;
using convert::MeshMeasure;

struct InfoOptions {
    SceneArguments scenes;
    std::string format = "text";
};

std::string line(const char* label, const String& text) {
    return std::string(String::format("  %-12s %s\n", label, text.buf()).view());
}

// "(0 0 0) to (1 2 3)".
String text(const Bounds& bounds) {
    std::string text;
    for (const auto& corner : {bounds.min, bounds.max}) {
        text += text.empty() ? "(" : " to (";
        for (const float number : corner) {
            char digits[realTextCapacity];
            text += text.ends_with('(') ? "" : " ";
            text += writeReal(number, digits);
        }
        text += ')';
    }
    return std::string_view(text);
}

// The meshes of a scene together; nothing without meshes.
std::string meshLines(const convert::SceneMeasure& measure) {
    MeshMeasure sum{};
    for (const MeshMeasure& mesh : measure.meshes) {
        sum.points += mesh.points;
        sum.faces += mesh.faces;
        sum.triangles += mesh.triangles;
    }
    std::string text;
    if (!measure.meshes.empty())
        text +=
            line("meshes", String::format("%zu (%s, %s, %s)", measure.meshes.size(), counted(sum.points, "point").buf(),
                                          counted(sum.faces, "face").buf(), counted(sum.triangles, "triangle").buf()));
    if (measure.bounds)
        text += line("bounds", cli::text(*measure.bounds));
    return text;
}

std::string describe(const SceneFile& file, const Scene& scene) {
    const inspect::SceneSummary summary = inspect::summarise(scene);
    std::string text(escapeForTerminal(file.diagnosis().displayName()).view());
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
    text += meshLines(convert::measure(scene));
    text += line("diagnostics", counted(file.diagnosis().count(LogSeverity::Error), "error") + ", " +
                                    counted(file.diagnosis().count(LogSeverity::Warning), "warning"));
    return text;
}

void write(JsonText& json, const std::optional<Bounds>& bounds) {
    if (!bounds)
        return json.null();
    json.object([&] {
        json.key("min").numbers(std::span<const float>(bounds->min));
        json.key("max").numbers(std::span<const float>(bounds->max));
    });
}

void write(JsonText& json, const MeshMeasure& mesh) {
    json.object([&] {
        json.key("name").text(mesh.source->name());
        json.key("valid").boolean(mesh.topology != nullptr);
        if (!mesh.topology)
            return;
        json.key("topology").text(mesh.topology);
        json.key("points").integer(mesh.points);
        json.key("faces").integer(mesh.faces);
        json.key("triangles").integer(mesh.triangles);
        json.key("bounds");
        write(json, mesh.bounds);
    });
}

void write(JsonText& json, const inspect::SceneSummary& summary) {
    json.key("definitions").integer(summary.definitions);
    json.key("nodes").integer(summary.nodes);
    json.key("types").object([&] {
        for (const auto& [type, count] : summary.nodesByType)
            json.key(type).integer(count);
    });
    json.key("inputs").integer(summary.inputs);
    json.key("buffers").object([&] {
        json.key("count").integer(summary.buffers);
        json.key("elements").integer(summary.bufferElements);
        json.key("bytes").integer(summary.bufferBytes);
    });
    json.key("links").object([&] {
        json.key("connections").integer(summary.connections);
        json.key("references").integer(summary.references);
    });
}

std::string jsonLine(const SceneFile& file, const Scene& scene) {
    const convert::SceneMeasure measure = convert::measure(scene);
    JsonText json;
    json.object([&] {
        json.key("file").text(file.diagnosis().name);
        json.key("version").integer(scene.fileVersion());
        json.key("time").text(scene.fileTime());
        json.key("comments").integer(scene.fileComments().size());
        write(json, inspect::summarise(scene));
        json.key("meshes").array([&] {
            for (const MeshMeasure& mesh : measure.meshes)
                write(json, mesh);
        });
        json.key("bounds");
        write(json, measure.bounds);
        json.key("diagnostics").object([&] {
            json.key("errors").integer(file.diagnosis().count(LogSeverity::Error));
            json.key("warnings").integer(file.diagnosis().count(LogSeverity::Warning));
        });
    });
    return std::string(json.view()) + '\n';
}

int info(const InfoOptions& options) {
    const bool isJson = options.format == "json";
    const int status = visitScenes(options.scenes, [isJson](const SceneFile& file, const Scene& scene) -> Finish {
        if (!file.diagnosis().isWhole())
            return {};
        return [diagnostics = diagnosticsText(file),
                description = isJson ? jsonLine(file, scene) : describe(file, scene)] {
            printError(diagnostics);
            print(description);
        };
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command infoCommand() {
    const auto options = std::make_shared<InfoOptions>();
    Command command{.name = "info",
                    .what = "Summarise scenes",
                    .example = "vrn info examples/first_scene.vrn\nvrn info --format json --jobs 4 examples",
                    .details = "Meshes and their places are those of the types that vrn convert knows.",
                    .run = [options] { return info(*options); }};
    addSceneFilesAndFolders(command.options, options->scenes);
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--format",
                               .help = "Set the format: text, or json (one line a file, with each mesh)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = {"text", "json"}});
    return command;
}

} // namespace vrn::cli

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/SceneFile.h"
#include "scene/RapidJson.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <memory>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace vrn::cli {

using namespace vor;

namespace {

struct CheckOptions {
    SceneArguments scenes;
    std::string format = "text";
    bool isWithoutLint = false; // or says what the reader takes without a word, too
    bool isWarningError = false;
};

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void writeText(JsonWriter& writer, const char* key, const String& text) {
    writer.Key(key);
    velmo_sdk::impl::writeJsonText(writer, text);
}

void writeDiagnostic(JsonWriter& writer, const LogRecord& record) {
    writer.StartObject();
    writeText(writer, "severity", record.severity == LogSeverity::Error ? "error" : "warning");
    writeText(writer, "message", record.text);
    if (record.severity == LogSeverity::Notice)
        writeText(writer, "source", "check");
    writer.Key("line");
    writer.Int(record.position.line);
    writer.Key("column");
    writer.Int(record.position.column);
    writer.EndObject();
}

std::string jsonLine(const SceneFile& file) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    writeText(writer, "file", file.argument());
    writer.Key("ok");
    writer.Bool(file.isOk());
    writer.Key("diagnostics");
    writer.StartArray();
    for (const LogRecord& record : file.diagnostics())
        writeDiagnostic(writer, record);
    writer.EndArray();
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

struct Totals {
    std::size_t files = 0;
    std::size_t errors = 0;
    std::size_t warnings = 0;
};

std::string summary(const Totals& totals, std::size_t asked) {
    std::string text(counted(totals.files, "file").view());
    text += " checked: ";
    text += counted(totals.errors, "error").view();
    text += ", ";
    text += counted(totals.warnings, "warning").view();
    if (totals.files != asked)
        text += String::format("; %s could not be read", counted(asked - totals.files, "file").buf()).view();
    return text + '\n';
}

int check(const CheckOptions& options) {
    const bool isText = options.format == "text";
    Totals totals;
    const auto visit = [&](const SceneFile& file, const Scene&) {
        if (!isText)
            print(jsonLine(file));
        if (!file.isWhole())
            return;
        ++totals.files;
        totals.errors += file.count(LogSeverity::Error);
        totals.warnings += file.warnings();
        if (isText)
            print(file.diagnosticsText());
    };
    int status = forEachScene(options.scenes, visit, options.isWithoutLint ? Notices::No : Notices::Yes);
    if (options.isWarningError && totals.warnings != 0)
        status = std::max<int>(status, exitErrors);
    if (isText)
        print(summary(totals, options.scenes.files.size()));
    return finishOutput() ? status : exitTrouble;
}

} // namespace

Command checkCommand() {
    const auto options = std::make_shared<CheckOptions>();
    Command command{.name = "check",
                    .what = "Say what is wrong with scenes, and where",
                    .example = "vrn check --werror examples/*.vrn\ngenerate-scene | vrn check --format json -",
                    .run = [options] { return check(*options); }};
    addSceneFiles(command.options, options->scenes);
    addReadingOptions(command.options, options->scenes);
    command.options.push_back({.names = "--format",
                               .help = "How to say it: text, or json (one line a file)",
                               .target = &options->format,
                               .value = "FORMAT",
                               .choices = {"text", "json"}});
    command.options.push_back({.names = "--no-lint",
                               .help = "Say nothing of what the reader takes without a word, but may not be meant",
                               .target = &options->isWithoutLint});
    command.options.push_back(
        {.names = "--werror", .help = "Let warnings fail the check, too", .target = &options->isWarningError});
    return command;
}

} // namespace vrn::cli

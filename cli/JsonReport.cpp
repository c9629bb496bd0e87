// Diagnostics for programs: one line of JSON a file.
#include "cli/Console.h"
#include "cli/Report.h"
#include "scene/RapidJson.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace vrn::cli {

using namespace vor;

namespace {

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

class JsonReport final : public Report {
public:
    Finish about(const SceneFile& file) override {
        return [line = jsonLine(file)] { print(line); };
    }
};

} // namespace

std::unique_ptr<Report> makeJsonReport() { return std::make_unique<JsonReport>(); }

} // namespace vrn::cli

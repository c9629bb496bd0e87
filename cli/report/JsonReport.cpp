// Diagnostics as JSON, one line a file.
#include "check/Findings.h"
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"
#include "scene/JsonWriter.h"

namespace vrn::cli {

using namespace vor;
using vor::velmo_sdk::impl::JsonText;

namespace {

void write(JsonText& json, const LogRecord& record) {
    json.object([&] {
        json.key("severity").text(record.severity == LogSeverity::Error ? "error" : "warning");
        json.key("message").text(record.text);
        if (record.severity == LogSeverity::Notice)
            json.key("source").text("check");
        if (const char* kind = check::kindName(record.format)) {
            json.key("source").text("types");
            json.key("rule").text(kind);
        }
        json.key("line").number(record.position.line);
        json.key("column").number(record.position.column);
    });
}

std::string jsonLine(const SceneFile& file) {
    JsonText json;
    json.object([&] {
        json.key("file").text(file.argument());
        json.key("ok").boolean(file.isOk());
        json.key("diagnostics").array([&] {
            for (const LogRecord& record : file.diagnostics())
                write(json, record);
        });
    });
    return std::string(json.view()) + '\n';
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

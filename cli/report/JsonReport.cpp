// Diagnostics for programs: one line of JSON a file.
#include "cli/report/Json.h"
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"

namespace vrn::cli {

using namespace vor;

namespace {

std::string diagnostic(const LogRecord& record) {
    return Json::object([&](Json& diagnostic) {
        diagnostic.text("severity", record.severity == LogSeverity::Error ? "error" : "warning");
        diagnostic.text("message", record.text);
        if (record.severity == LogSeverity::Notice)
            diagnostic.text("source", "check");
        diagnostic.number("line", record.position.line);
        diagnostic.number("column", record.position.column);
    });
}

std::string jsonLine(const SceneFile& file) {
    std::string diagnostics;
    for (const LogRecord& record : file.diagnostics())
        diagnostics += (diagnostics.empty() ? "" : ",") + diagnostic(record);
    return Json::object([&](Json& line) {
               line.text("file", file.argument());
               line.boolean("ok", file.isOk());
               line.list("diagnostics", diagnostics);
           }) +
           '\n';
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

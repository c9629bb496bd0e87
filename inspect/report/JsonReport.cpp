// Diagnostics as JSON, one line a file.
#include "inspect/report/Report.h"

#include "check/Findings.h"
#include "scene/JsonWriter.h"

namespace vrn::inspect {

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

std::string jsonLine(const Diagnosis& file) {
    JsonText json;
    json.object([&] {
        json.key("file").text(file.name);
        json.key("ok").boolean(file.isOk());
        if (!file.isWhole())
            json.key("error").text(file.readError);
        json.key("diagnostics").array([&] {
            for (const Diagnostic& diagnostic : file.diagnostics)
                write(json, diagnostic.record);
        });
    });
    return std::string(json.view()) + '\n';
}

class JsonReport final : public Report {
public:
    explicit JsonReport(TextSink sink) : sink_(std::move(sink)) {}

    [[nodiscard]] bool needsLines() const noexcept override { return false; }

    Finish about(const Diagnosis& file) override {
        return [this, line = jsonLine(file)] { sink_(line); };
    }

private:
    TextSink sink_;
};

} // namespace

std::unique_ptr<Report> makeJsonReport(TextSink sink) { return std::make_unique<JsonReport>(std::move(sink)); }

} // namespace vrn::inspect

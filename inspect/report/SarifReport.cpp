// Diagnostics as one log in SARIF 2.1.0 (Static Analysis Results Interchange Format), which editors and code hosts
// display. Results are written as the files are finished; the members of the run that depend on all files follow them.
#include "inspect/report/Report.h"

#include "inspect/read/Kind.h"
#include "inspect/report/ComparablePath.h"
#include "scene/JsonWriter.h"
#include "scene/core/TextEncoding.h"

#include <map>

namespace vrn::inspect {

using namespace vor;
using vor::velmo_sdk::impl::JsonText;

namespace {

constexpr const char* schema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";

// Appends an item, as JSON, to a list with one item a line.
void append(std::string& list, const JsonText& item) {
    list += list.empty() ? "\n" : ",\n";
    list += item.view();
}

// A path as a URI reference. Relative paths stay relative to the directory that the consumer of the log starts from.
std::string uriOf(std::string_view path) {
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char c : path) {
        const auto [high, low] = hexDigits(static_cast<u8>(c));
        if (String::isLetter(c) || String::isDigit(c) || std::string_view("-._~/").find(c) != std::string_view::npos)
            uri += c;
        else
            uri += {'%', high, low};
    }
    return uri;
}

void writeText(JsonText& json, const char* key, std::string_view text) {
    json.key(key).object([&] { json.key("text").text(text); });
}

void writeLocation(JsonText& json, const String& file, TextPosition position) {
    json.key("locations").array([&] {
        json.object([&] {
            json.key("physicalLocation").object([&] {
                json.key("artifactLocation").object([&] {
                    if (file == "-")
                        writeText(json, "description", "standard input");
                    else
                        json.key("uri").text(uriOf(comparablePath(file)));
                });
                if (position.line > 0)
                    json.key("region").object([&] {
                        json.key("startLine").number(position.line);
                        json.key("startColumn").number(position.column);
                    });
            });
        });
    });
}

const char* levelOf(LogSeverity severity) {
    switch (severity) {
    case LogSeverity::Error:
        return "error";
    case LogSeverity::Warning:
        return "warning";
    default:
        return "note";
    }
}

// The name of the kind of message, or its level if it has no name.
const char* ruleOf(const LogRecord& record) {
    const char* kind = kindOf(record);
    return kind ? kind : levelOf(record.severity);
}

void appendResult(std::string& results, const String& file, const Diagnostic& diagnostic) {
    const LogRecord& record = diagnostic.record;
    JsonText json;
    json.object([&] {
        json.key("ruleId").text(ruleOf(record));
        json.key("level").text(levelOf(record.severity));
        writeText(json, "message", record.text);
        writeLocation(json, file, diagnostic.position());
    });
    append(results, json);
}

void appendRule(std::string& rules, const std::string& id, const char* format) {
    JsonText json;
    json.object([&] {
        json.key("id").text(id);
        writeText(json, "shortDescription", format ? format : "%s");
    });
    append(rules, json);
}

void appendNotification(std::string& notifications, const Diagnosis& file) {
    JsonText json;
    json.object([&] {
        json.key("level").text("error");
        writeText(json, "message", file.readError);
        writeLocation(json, file.name, {});
    });
    append(notifications, json);
}

class SarifReport final : public Report {
public:
    explicit SarifReport(TextSink sink) : sink_(std::move(sink)) {}

    Finish about(const Diagnosis& file) override {
        std::string results;
        std::map<std::string, const char*> rules;
        for (const Diagnostic& diagnostic : file.diagnostics) {
            appendResult(results, file.name, diagnostic);
            rules.emplace(ruleOf(diagnostic.record), diagnostic.record.format);
        }
        std::string trouble;
        if (!file.isWhole())
            appendNotification(trouble, file);
        return [this, results = std::move(results), rules = std::move(rules), trouble = std::move(trouble)] {
            begin();
            writeResults(results);
            rules_.insert(rules.begin(), rules.end());
            if (!trouble.empty())
                notifications_ += (notifications_.empty() ? "" : ",") + trouble;
        };
    }

    void end(const Totals& totals) override {
        begin();
        sink_("\n],\n" + membersAfterResults(totals) + "]}\n");
    }

private:
    // Delayed until there is output: an unreadable catalogue must not leave half a log.
    void begin() {
        if (!hasBegun_)
            sink_(std::string("{\"$schema\":\"") + schema + "\",\"version\":\"2.1.0\",\"runs\":[{\"results\":[");
        hasBegun_ = true;
    }

    void writeResults(const std::string& results) {
        if (results.empty())
            return;
        sink_(hasResults_ ? "," : "");
        sink_(results);
        hasResults_ = true;
    }

    // The rest of the run, with its closing brace.
    [[nodiscard]] std::string membersAfterResults(const Totals& totals) const {
        std::string rules;
        for (const auto& [id, format] : rules_)
            appendRule(rules, id, format);
        JsonText json;
        json.object([&] {
            json.key("columnKind").text("unicodeCodePoints");
            json.key("invocations").array([&] {
                json.object([&] {
                    json.key("executionSuccessful").boolean(totals.unreadable == 0);
                    json.key("toolExecutionNotifications").raw('[' + notifications_ + ']');
                });
            });
            json.key("tool").object([&] {
                json.key("driver").object([&] {
                    json.key("name").text("vrn");
                    json.key("version").text(VRN_VERSION);
                    json.key("rules").raw('[' + rules + ']');
                });
            });
        });
        return std::string(json.view().substr(1));
    }

    TextSink sink_;
    bool hasBegun_ = false;
    bool hasResults_ = false;
    std::map<std::string, const char*> rules_; // their formats, by id
    std::string notifications_;
};

} // namespace

std::unique_ptr<Report> makeSarifReport(TextSink sink) { return std::make_unique<SarifReport>(std::move(sink)); }

} // namespace vrn::inspect

// Diagnostics as one log in SARIF 2.1.0 (Static Analysis Results Interchange Format), which editors and hosts of code
// show. Results are written as they come; what is known only at the end stands behind them.
#include "cli/report/Json.h"
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"
#include "impl/Reader.h"

#include <map>

namespace vrn::cli {

using namespace vor;

namespace {

constexpr const char* schema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";

void append(std::string& list, const std::string& item) {
    list += list.empty() ? "\n" : ",\n";
    list += item;
}

// A path as a URI: absolute ones as such, others relative to wherever the log's reader starts from.
String uriOf(std::string_view path) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char c : path) {
        const auto byte = static_cast<u8>(c);
        if (String::isLetter(c) || String::isDigit(c) || std::string_view("-._~/").find(c) != std::string_view::npos)
            uri += c;
        else
            uri += {'%', digits[byte / 16], digits[byte % 16]};
    }
    return std::string_view(uri);
}

std::string location(const SceneFile& file, TextPosition position) {
    return Json::object([&](Json& location) {
        location.object("physicalLocation", [&](Json& physical) {
            physical.object("artifactLocation", [&](Json& artifact) {
                if (file.argument() == "-")
                    artifact.object("description", [](Json& message) { message.text("text", "standard input"); });
                else
                    artifact.text("uri", uriOf(comparablePath(file.argument())));
            });
            if (position.line > 0)
                physical.object("region", [&](Json& region) {
                    region.number("startLine", position.line);
                    region.number("startColumn", position.column);
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

// The name of the kind of message, or for want of one how bad it is.
const char* ruleOf(const LogRecord& record) {
    const char* name = velmo_sdk::impl::messageName(record.format);
    return name ? name : levelOf(record.severity);
}

std::string result(const SceneFile& file, const LogRecord& record, TextPosition position) {
    return Json::object([&](Json& result) {
        result.text("ruleId", ruleOf(record));
        result.text("level", levelOf(record.severity));
        result.object("message", [&](Json& message) { message.text("text", record.text); });
        result.list("locations", location(file, position));
    });
}

std::string rule(const std::string& id, const char* format) {
    return Json::object([&](Json& rule) {
        rule.text("id", std::string_view(id));
        rule.object("shortDescription", [&](Json& message) { message.text("text", format ? format : "%s"); });
    });
}

std::string notification(const SceneFile& file) {
    return Json::object([&](Json& notification) {
        notification.text("level", "error");
        notification.object("message", [&](Json& message) { message.text("text", file.readError()); });
        notification.list("locations", location(file, {}));
    });
}

class SarifReport final : public Report {
public:
    Finish about(const SceneFile& file) override {
        std::string results;
        std::map<std::string, const char*> rules;
        const std::vector<TextPosition> positions = file.characterPositions();
        for (std::size_t i = 0; i < positions.size(); ++i) {
            const LogRecord& record = file.diagnostics()[i];
            append(results, result(file, record, positions[i]));
            rules.emplace(ruleOf(record), record.format);
        }
        std::string trouble = file.isWhole() ? std::string() : notification(file);
        return [this, results = std::move(results), rules = std::move(rules), trouble = std::move(trouble)] {
            begin();
            if (!results.empty()) {
                print(hasResults_ ? "," : "");
                print(results);
                hasResults_ = true;
            }
            rules_.insert(rules.begin(), rules.end());
            if (!trouble.empty())
                append(notifications_, trouble);
        };
    }

    void end(const Totals& totals) override {
        begin();
        print("\n],\n" + behindResults(totals).substr(1) + "]}\n");
    }

private:
    // Not before there is something to say: a catalogue that cannot be read leaves no half of a log.
    void begin() {
        if (!hasBegun_)
            print(std::string("{\"$schema\":\"") + schema + "\",\"version\":\"2.1.0\",\"runs\":[{\"results\":[");
        hasBegun_ = true;
    }

    [[nodiscard]] std::string behindResults(const Totals& totals) const {
        return Json::object([&](Json& run) {
            run.text("columnKind", "unicodeCodePoints");
            run.list("invocations", Json::object([&](Json& invocation) {
                         invocation.boolean("executionSuccessful", totals.unreadable == 0);
                         invocation.list("toolExecutionNotifications", notifications_);
                     }));
            run.object("tool", [&](Json& tool) {
                tool.object("driver", [&](Json& driver) {
                    driver.text("name", "vrn");
                    driver.text("version", VRN_VERSION);
                    std::string rules;
                    for (const auto& [id, format] : rules_)
                        append(rules, rule(id, format));
                    driver.list("rules", rules);
                });
            });
        });
    }

    bool hasBegun_ = false;
    bool hasResults_ = false;
    std::map<std::string, const char*> rules_; // and their formats
    std::string notifications_;
};

} // namespace

std::unique_ptr<Report> makeSarifReport() { return std::make_unique<SarifReport>(); }

} // namespace vrn::cli

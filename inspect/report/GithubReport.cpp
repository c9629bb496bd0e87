// Diagnostics as GitHub workflow commands, which annotate the lines of a change:
//
//     ::error file=a.vrn,line=3,col=7,title=vrn check::BAD TOKEN ...
#include "inspect/report/Report.h"

#include "inspect/read/Kind.h"
#include "inspect/report/ComparablePath.h"
#include "scene/core/TextEncoding.h"

namespace vrn::inspect {

using namespace vor;

namespace {

// Percent-encodes the special characters, which the workflow decodes, and escapes all other control characters, which
// it does not.
std::string escape(std::string_view text, std::string_view special) {
    std::string escaped;
    while (!text.empty()) {
        if (special.find(text[0]) == std::string_view::npos) {
            text.remove_prefix(escapeCharacter(text, escaped));
            continue;
        }
        const auto [high, low] = hexDigits(static_cast<u8>(text[0]));
        escaped += {'%', high, low};
        text.remove_prefix(1);
    }
    return escaped;
}

std::string messageText(std::string_view text) { return escape(text, "%\r\n"); }
std::string propertyText(std::string_view text) { return escape(text, "%\r\n:,"); }

std::string command(const Diagnostic& diagnostic, const std::string& file) {
    const LogRecord& record = diagnostic.record;
    const TextPosition position = diagnostic.position();
    std::string text = record.severity == LogSeverity::Error ? "::error file=" : "::warning file=";
    text += file;
    if (position.line > 0)
        text += String::format(",line=%d,col=%d", position.line, position.column).view();
    text += ",title=vrn check::" + messageText(record.text);
    return text + messageText(markOf(record)) + '\n';
}

class GithubReport final : public Report {
public:
    explicit GithubReport(TextSink sink) : sink_(std::move(sink)) {}

    Finish about(const Diagnosis& file) override {
        const std::string name = propertyText(comparablePath(file.displayName()));
        std::string text;
        if (!file.isWhole())
            text = "::error file=" + name + ",title=vrn check::" + messageText(file.readError) + '\n';
        for (const Diagnostic& diagnostic : file.diagnostics)
            text += command(diagnostic, name);
        return [this, text = std::move(text)] { sink_(text); };
    }

private:
    TextSink sink_;
};

} // namespace

std::unique_ptr<Report> makeGithubReport(TextSink sink) { return std::make_unique<GithubReport>(std::move(sink)); }

} // namespace vrn::inspect

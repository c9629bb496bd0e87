// Diagnostics as GitHub workflow commands, which annotate the lines of a change:
//
//     ::error file=a.vrn,line=3,col=7,title=vrn check::BAD TOKEN ...
#include "cli/files/Mark.h"
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"
#include "scene/core/TextEncoding.h"

namespace vrn::cli {

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

std::string command(const LogRecord& record, TextPosition position, const std::string& file) {
    std::string text = record.severity == LogSeverity::Error ? "::error file=" : "::warning file=";
    text += file;
    if (position.line > 0)
        text += String::format(",line=%d,col=%d", position.line, position.column).view();
    text += ",title=vrn check::" + messageText(record.text);
    return text + messageText(markOf(record)) + '\n';
}

class GithubReport final : public Report {
public:
    Finish about(const SceneFile& file) override {
        const std::string name = propertyText(comparablePath(file.displayName()));
        std::string text;
        if (!file.isWhole())
            text = "::error file=" + name + ",title=vrn check::" + messageText(file.readError()) + '\n';
        const std::vector<TextPosition> positions = file.characterPositions();
        for (std::size_t i = 0; i < positions.size(); ++i)
            text += command(file.diagnostics()[i], positions[i], name);
        return [text = std::move(text)] { print(text); };
    }
};

} // namespace

std::unique_ptr<Report> makeGithubReport() { return std::make_unique<GithubReport>(); }

} // namespace vrn::cli

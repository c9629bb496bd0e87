// Diagnostics as text, with the lines that they refer to.
#include "cli/report/Report.h"
#include "cli/terminal/Console.h"

namespace vrn::cli {

using namespace vor;

namespace {

std::string summary(const Totals& totals) {
    std::string text(counted(totals.files, "file").view());
    text += " checked: ";
    text += counted(totals.errors, "error").view();
    text += ", ";
    text += counted(totals.warnings, "warning").view();
    if (totals.unreadable != 0)
        text += String::format("; %s could not be read", counted(totals.unreadable, "file").buf()).view();
    return text + '\n';
}

class TextReport final : public Report {
public:
    Finish about(const SceneFile& file) override {
        if (!file.isWhole())
            return {};
        return [text = file.diagnosticsText()] { print(text); };
    }

    void end(const Totals& totals) override { print(summary(totals)); }
};

} // namespace

std::unique_ptr<Report> makeTextReport() { return std::make_unique<TextReport>(); }

} // namespace vrn::cli

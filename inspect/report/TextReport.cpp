// Diagnostics as text, with the lines that they refer to.
#include "inspect/report/Report.h"

#include "inspect/text/Counted.h"

namespace vrn::inspect {

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
    explicit TextReport(TextSink sink) : sink_(std::move(sink)) {}

    Finish about(const Diagnosis& file) override {
        if (!file.isWhole())
            return {};
        return [this, text = diagnosticsText(file)] { sink_(text); };
    }

    void end(const Totals& totals) override { sink_(summary(totals)); }

private:
    TextSink sink_;
};

} // namespace

std::unique_ptr<Report> makeTextReport(TextSink sink) { return std::make_unique<TextReport>(std::move(sink)); }

} // namespace vrn::inspect

#include "inspect/report/Report.h"

#include <algorithm>
#include <iterator>

namespace vrn::inspect {

namespace {

struct Format {
    std::string_view name;
    MakeReport make;
};
constexpr Format formats[] = {
    {"text", makeTextReport}, {"json", makeJsonReport}, {"sarif", makeSarifReport}, {"github", makeGithubReport}};

} // namespace

Totals& Totals::operator+=(const Totals& more) noexcept {
    files += more.files;
    errors += more.errors;
    warnings += more.warnings;
    unreadable += more.unreadable;
    return *this;
}

Totals totalsOf(const Diagnosis& file) noexcept {
    if (!file.isWhole())
        return {.unreadable = 1};
    return {.files = 1, .errors = file.count(vor::LogSeverity::Error), .warnings = file.warnings()};
}

MakeReport reportNamed(std::string_view format) noexcept {
    const auto* const found = std::ranges::find(formats, format, &Format::name);
    return found == std::end(formats) ? nullptr : found->make;
}

std::vector<std::string> reportNames() {
    std::vector<std::string> names;
    std::ranges::transform(formats, std::back_inserter(names),
                           [](const Format& format) { return std::string(format.name); });
    return names;
}

std::string reportText(MakeReport make, std::span<const Diagnosis> files) {
    std::string text;
    const std::unique_ptr<Report> report = make([&](std::string_view piece) { text += piece; });
    Totals totals;
    for (const Diagnosis& file : files) {
        if (const Report::Finish finish = report->about(file))
            finish();
        totals += totalsOf(file);
    }
    report->end(totals);
    return text;
}

} // namespace vrn::inspect

// Reports on what was found wrong with texts: as text, JSON, SARIF and GitHub workflow commands.
//
//     const std::unique_ptr<Report> report = makeSarifReport(sink);
//     Totals totals;
//     for (const Diagnosis& file : files) {
//         if (const Report::Finish finish = report->about(file))
//             finish();
//         totals += totalsOf(file);
//     }
//     report->end(totals);
//
//     const std::string text = reportText(makeJsonReport, files); // the same as a text
//
// The text goes to the sink; what it throws propagates. A report owns its sink and keeps no Diagnosis. Linear in the
// diagnostics.
#pragma once

#include "inspect/read/Diagnosis.h"
#include "scene/core/TextSink.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vrn::inspect {

// The totals of all files.
struct Totals {
    std::size_t files = 0; // readable files
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t unreadable = 0;

    Totals& operator+=(const Totals& more) noexcept;
};
[[nodiscard]] Totals totalsOf(const Diagnosis& file) noexcept;

class Report {
public:
    // What writes a part of the report; may be empty.
    using Finish = std::function<void()>;

    virtual ~Report() = default;

    // Whether the diagnostics must have their lines.
    [[nodiscard]] virtual bool needsLines() const noexcept { return true; }

    // Prepares the report on a file, readable or not, and returns the function that writes it. Called by several
    // threads; the functions are called in the order of the files and one at a time.
    [[nodiscard]] virtual Finish about(const Diagnosis& file) = 0;

    // Called after the reports on all files are written.
    virtual void end(const Totals&) {}
};

using MakeReport = std::unique_ptr<Report> (*)(vor::TextSink sink);
[[nodiscard]] std::unique_ptr<Report> makeTextReport(vor::TextSink sink);
[[nodiscard]] std::unique_ptr<Report> makeJsonReport(vor::TextSink sink); // one line a file
[[nodiscard]] std::unique_ptr<Report> makeSarifReport(vor::TextSink sink);
[[nodiscard]] std::unique_ptr<Report> makeGithubReport(vor::TextSink sink);

// Formats by the names that users know: `text`, `json`, `sarif`, `github`; null for any other name.
[[nodiscard]] MakeReport reportNamed(std::string_view format) noexcept;
[[nodiscard]] std::vector<std::string> reportNames();

// The whole report on some files.
[[nodiscard]] std::string reportText(MakeReport make, std::span<const Diagnosis> files);

} // namespace vrn::inspect

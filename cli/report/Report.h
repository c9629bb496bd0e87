// The report formats of `vrn check`.
#pragma once

#include "cli/files/InOrder.h"
#include "cli/files/SceneFile.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace vrn::cli {

// The totals of all files.
struct Totals {
    std::size_t files = 0; // readable files
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t unreadable = 0;
};

class Report {
public:
    virtual ~Report() = default;

    // Prepares the report on a file, readable or not, and returns the function that prints it. Called by several
    // threads; the functions are called in the order of the files and one at a time.
    [[nodiscard]] virtual Finish about(const SceneFile& file) = 0;

    // Called after the reports on all files are printed.
    virtual void end(const Totals&) {}
};

// The path without leading `./`, as the consumers of reports write it.
[[nodiscard]] inline std::string_view comparablePath(const vor::String& path) {
    std::string_view rest = path;
    while (rest.starts_with("./"))
        rest.remove_prefix(std::min(rest.find_first_not_of('/', 1), rest.size()));
    return rest;
}

[[nodiscard]] std::unique_ptr<Report> makeTextReport();
[[nodiscard]] std::unique_ptr<Report> makeJsonReport();
[[nodiscard]] std::unique_ptr<Report> makeGithubReport();
[[nodiscard]] std::unique_ptr<Report> makeSarifReport();

} // namespace vrn::cli

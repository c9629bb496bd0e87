// The formats in which `vrn check` says what it found.
#pragma once

#include "cli/files/InOrder.h"
#include "cli/files/SceneFile.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace vrn::cli {

// What was found in all files.
struct Totals {
    std::size_t files = 0; // that could be read
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t unreadable = 0;
};

class Report {
public:
    virtual ~Report() = default;

    // What is to be said of a file, also of one that could not be read, when it is its turn. May be asked for several
    // files at once.
    [[nodiscard]] virtual Finish about(const SceneFile& file) = 0;

    // Says what remains when that of all files is said.
    virtual void end(const Totals&) {}
};

// The path of a file for programs that compare it with others from the same folder: they write no `./` before it.
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

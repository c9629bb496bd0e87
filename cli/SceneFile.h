// One file of the command line, read into a scene.
#pragma once

#include "cli/Commands.h"
#include "scene/Scene.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <functional>
#include <vector>

namespace vrn::cli {

using vor::velmo_sdk::impl::Scene;

class SceneFile {
public:
    // `-` is standard input, whose text is kept so that its lines can be shown.
    explicit SceneFile(vor::String argument) : argument_(std::move(argument)) {}

    // Reads the file into `scene`. False, with a complaint, when it cannot be opened or read to its end.
    [[nodiscard]] bool read(Scene& scene);

    // What the reader said: its result, and everything that it logged. An error that it throws counts
    // as one logged.
    [[nodiscard]] bool isOk() const noexcept { return isOk_; }
    [[nodiscard]] const std::vector<vor::LogRecord>& diagnostics() const noexcept { return diagnostics_; }
    [[nodiscard]] std::size_t count(vor::LogSeverity severity) const noexcept;
    [[nodiscard]] bool hasErrors() const noexcept { return !isOk_ || count(vor::LogSeverity::Error) != 0; }

    [[nodiscard]] const vor::String& argument() const noexcept { return argument_; }
    [[nodiscard]] vor::String displayName() const;

    // All diagnostics for people, each with its line of the text and a caret under the column.
    [[nodiscard]] std::string diagnosticsText() const;

private:
    [[nodiscard]] bool isStandardInput() const noexcept { return argument_ == "-"; }
    [[nodiscard]] vor::File open() const;

    vor::String argument_;
    vor::String standardInput_;
    std::vector<vor::LogRecord> diagnostics_;
    bool isOk_ = false;
};

// Reads each file into a scene of its own and hands both to `visit`. A file that cannot be read is left
// out, with a complaint. Returns the exit status that the files deserve. Throws UnusableCatalogue, having
// complained, when the catalogue cannot be read.
[[nodiscard]] int forEachScene(const SceneArguments& arguments,
                               const std::function<void(const SceneFile&, const Scene&)>& visit);

struct UnusableCatalogue {};

} // namespace vrn::cli

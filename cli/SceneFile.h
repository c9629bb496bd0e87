// One file of the command line, read into a scene.
#pragma once

#include "cli/Command.h"
#include "scene/Scene.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <functional>
#include <memory>
#include <vector>

namespace vrn::cli {

using vor::velmo_sdk::impl::Scene;

// Which scenes a command reads, and how.
struct SceneArguments {
    std::vector<std::string> files; // `-` is standard input
    std::string types;              // a catalogue, or empty
    vor::velmo_sdk::impl::SceneLimits limits;
};

// The options that set them: the files, and those that say how to read them.
void addSceneFiles(std::vector<Option>& options, SceneArguments& arguments);
void addReadingOptions(std::vector<Option>& options, SceneArguments& arguments);

class SceneFile {
public:
    // `-` is standard input. What can be read only once, a pipe for one, is kept so that its lines can be
    // shown.
    explicit SceneFile(vor::String argument) : argument_(std::move(argument)) {}

    // Reads the file into `scene`; whether what the reader takes without a word is a diagnostic, too.
    void read(Scene& scene, vor::Notices notices);

    // Whether all of the file could be read; if not, readError() says why.
    [[nodiscard]] bool isWhole() const noexcept { return readError_.isEmpty(); }
    [[nodiscard]] const vor::String& readError() const noexcept { return readError_; }
    void giveUp(const vor::String& reason) { readError_ = reason; }

    // What the reader said: its result, and everything that it logged. An error that it throws counts
    // as one logged. A file of which a part is missing is not ok.
    [[nodiscard]] bool isOk() const noexcept { return isOk_ && isWhole(); }
    [[nodiscard]] const std::vector<vor::LogRecord>& diagnostics() const noexcept { return diagnostics_; }
    [[nodiscard]] std::size_t count(vor::LogSeverity severity) const noexcept;
    [[nodiscard]] std::size_t warnings() const noexcept; // notices are warnings of the command's own
    [[nodiscard]] bool hasErrors() const noexcept { return !isOk() || count(vor::LogSeverity::Error) != 0; }

    [[nodiscard]] const vor::String& argument() const noexcept { return argument_; }
    [[nodiscard]] vor::String displayName() const;

    // All diagnostics for people, each with its line of the text and a caret under the column.
    [[nodiscard]] std::string diagnosticsText() const;

private:
    [[nodiscard]] bool isStandardInput() const noexcept { return argument_ == "-"; }
    [[nodiscard]] vor::File open() const;
    void keep();
    void add(const vor::LogRecord& record);

    vor::String argument_;
    vor::String kept_; // the text, if it can be read only once
    bool isKept_ = false;
    std::vector<vor::LogRecord> diagnostics_;
    std::size_t keptBytes_ = 0; // of their texts
    vor::String readError_;
    bool isOk_ = false;
};

// Reads each file into a scene of its own and hands both to `visit`, also when a part of the file could
// not be read; then complains of it. Returns the exit status that the files deserve. Throws
// UnusableCatalogue, having complained, when the catalogue cannot be read.
[[nodiscard]] int forEachScene(const SceneArguments& arguments,
                               const std::function<void(const SceneFile&, const Scene&)>& visit,
                               vor::Notices notices = vor::Notices::No);

struct UnusableCatalogue {};

// The catalogue that the arguments name, or null; throws like forEachScene().
[[nodiscard]] std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> loadCatalogue(const SceneArguments& arguments);

} // namespace vrn::cli

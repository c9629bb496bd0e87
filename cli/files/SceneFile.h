// One file of the command line, read into a scene; and all of them.
#pragma once

#include "cli/arguments/Command.h"
#include "cli/files/InOrder.h"
#include "scene/Scene.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <functional>
#include <memory>
#include <vector>

namespace vrn::cli {

using vor::velmo_sdk::impl::Scene;

class Progress;
struct Excerpt;

// Which scenes a command reads, and how.
struct SceneArguments {
    std::vector<std::string> files; // `-` is standard input
    std::string types;              // a catalogue, or empty
    vor::velmo_sdk::impl::SceneLimits limits;
    bool hasFolders = false; // or a folder is no scene
    vor::u64 jobs = 1;       // threads that read; 0 for as many as there are processors
    bool isQuiet = false;    // or shows how far the reading has come
};

// The options that set them: the files, or files and folders and how many to read at once; and those that say how
// to read them.
void addSceneFiles(std::vector<Option>& options, SceneArguments& arguments);
void addSceneFilesAndFolders(std::vector<Option>& options, SceneArguments& arguments);
void addReadingOptions(std::vector<Option>& options, SceneArguments& arguments);

class SceneFile {
public:
    // `-` is standard input. What can be read only once, a pipe for one, is kept so that its lines can be
    // shown.
    explicit SceneFile(vor::String argument) : argument_(std::move(argument)) {}

    // Whether what is read is gone, as of a pipe.
    [[nodiscard]] bool isReadOnce() const;

    // Reads the file into `scene`; whether what the reader takes without a word is a diagnostic, too; and who wants to
    // know how far that has come.
    void read(Scene& scene, vor::Notices notices, Progress* progress = nullptr);

    // Whether all of the file could be read; if not, readError() says why.
    [[nodiscard]] bool isWhole() const noexcept { return readError_.isEmpty(); }
    [[nodiscard]] const vor::String& readError() const noexcept { return readError_; }

    // Nothing of the file counts, for this reason.
    void giveUp(const vor::String& reason);

    // What the reader said: its result, and everything that it logged. An error that it throws counts
    // as one logged. A file of which a part is missing is not ok.
    [[nodiscard]] bool isOk() const noexcept { return isOk_ && isWhole(); }
    [[nodiscard]] const std::vector<vor::LogRecord>& diagnostics() const noexcept { return diagnostics_; }
    [[nodiscard]] std::size_t count(vor::LogSeverity severity) const noexcept;
    [[nodiscard]] std::size_t warnings() const noexcept; // notices are warnings of the command's own
    [[nodiscard]] bool hasErrors() const noexcept { return !isOk() || count(vor::LogSeverity::Error) != 0; }

    [[nodiscard]] const vor::String& argument() const noexcept { return argument_; }
    [[nodiscard]] vor::String displayName() const;

    // Where in the text each diagnostic is, with columns that count characters from 1; a line of 0 if that is unknown.
    // Reads the file again.
    [[nodiscard]] std::vector<vor::TextPosition> characterPositions() const;

    // All diagnostics for people, each with its line of the text and a caret under the column.
    [[nodiscard]] std::string diagnosticsText() const;

private:
    [[nodiscard]] bool isStandardInput() const noexcept { return argument_ == "-"; }
    [[nodiscard]] vor::File open() const;
    void keep(const vor::File& file);
    [[nodiscard]] std::vector<Excerpt> excerpts() const;
    void parse(Scene& scene, const vor::File& file, vor::Notices notices);
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

// The same on as many threads as the arguments say: `visit` may run for several files at once; what it returns, and
// the complaint, follows in the order of the files and one at a time, when the scene is gone.
using Visit = std::function<Finish(const SceneFile&, const Scene&)>;
[[nodiscard]] int visitScenes(const SceneArguments& arguments, const Visit& visit,
                              vor::Notices notices = vor::Notices::No);

struct UnusableCatalogue {};

// The catalogue that the arguments name, or null; throws like forEachScene().
[[nodiscard]] std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> loadCatalogue(const SceneArguments& arguments);

} // namespace vrn::cli

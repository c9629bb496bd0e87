// Reads the files that the arguments of a command name into scenes.
#pragma once

#include "cli/arguments/Command.h"
#include "cli/files/InOrder.h"
#include "impl/SourceMap.h"
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

// The scenes that a command reads, and how it reads them.
struct SceneArguments {
    std::vector<std::string> files; // `-` is standard input
    std::string types;              // of loadCatalogue()
    vor::velmo_sdk::impl::SceneLimits limits;
    bool hasFolders = false;   // folders stand for the scenes in them
    vor::u64 jobs = 1;         // number of threads that read; 0 for one a processor
    bool isQuiet = false;      // hides the progress
    bool wantsSources = false; // records the positions of statements for SceneFile::sources()
};

// Add the options that set these: files; files, folders and the number of threads; the catalogue and the limits; and
// these and everything else.
void addSceneFiles(std::vector<Option>& options, SceneArguments& arguments);
void addSceneFilesAndFolders(std::vector<Option>& options, SceneArguments& arguments);
void addCatalogueAndLimits(std::vector<Option>& options, SceneArguments& arguments);
void addReadingOptions(std::vector<Option>& options, SceneArguments& arguments);

class SceneFile {
public:
    // `-` is standard input. Input that can be read only once, such as a pipe, is kept in memory, so that diagnostics
    // can show its lines.
    explicit SceneFile(vor::String argument) : argument_(std::move(argument)) {}

    // Whether the file can be read only once, such as a pipe.
    [[nodiscard]] bool isReadOnce() const;

    // Reads the file into `scene` and keeps the diagnostics, including the notices if requested. Reports the bytes read
    // to `progress` unless it is null.
    void read(Scene& scene, vor::Notices notices, Progress* progress = nullptr);

    // From now on, reading records where the text sets what. Null unless that was called.
    void recordSources() { sources_ = std::make_unique<vor::velmo_sdk::impl::SourceMap>(); }
    [[nodiscard]] const vor::velmo_sdk::impl::SourceMap* sources() const noexcept { return sources_.get(); }

    // Adds a diagnostic to those of the reader, or drops all of a kind, as messageName() calls it.
    void add(const vor::LogRecord& record);
    void drop(const char* kind);

    // Whether the whole file could be read; otherwise readError() is the reason.
    [[nodiscard]] bool isWhole() const noexcept { return readError_.isEmpty(); }
    [[nodiscard]] const vor::String& readError() const noexcept { return readError_; }

    // Discards the diagnostics and marks the file as unreadable.
    void fail(const vor::String& reason);

    // The result of the reader and everything it logged. An exception that it throws counts as a logged error. A file
    // that could not be read completely is not ok.
    [[nodiscard]] bool isOk() const noexcept { return isOk_ && isWhole(); }
    [[nodiscard]] const std::vector<vor::LogRecord>& diagnostics() const noexcept { return diagnostics_; }
    [[nodiscard]] std::size_t count(vor::LogSeverity severity) const noexcept;
    [[nodiscard]] std::size_t warnings() const noexcept; // notices count as warnings
    [[nodiscard]] bool hasErrors() const noexcept { return !isOk() || count(vor::LogSeverity::Error) != 0; }

    [[nodiscard]] const vor::String& argument() const noexcept { return argument_; }
    [[nodiscard]] vor::String displayName() const;

    // What relative paths in the scene are relative to; empty for the current folder.
    [[nodiscard]] std::string folder() const;

    // The position of each diagnostic, with columns that count characters from 1; line 0 if unknown. Reads the file
    // again.
    [[nodiscard]] std::vector<vor::TextPosition> characterPositions() const;

    // All diagnostics as text, each with its line of the file and a caret under the column. Reads the file again.
    [[nodiscard]] std::string diagnosticsText() const;

private:
    [[nodiscard]] bool isStandardInput() const noexcept { return argument_ == "-"; }
    [[nodiscard]] vor::File open() const;
    void keep(const vor::File& file);
    [[nodiscard]] std::vector<Excerpt> excerpts() const;
    void parse(Scene& scene, const vor::File& file, vor::Notices notices);

    vor::String argument_;
    vor::String kept_; // the contents, if they can be read only once
    bool isKept_ = false;
    std::vector<vor::LogRecord> diagnostics_;
    std::size_t messageBytes_ = 0; // total length of their texts
    vor::String readError_;
    bool isOk_ = false;
    std::unique_ptr<vor::velmo_sdk::impl::SourceMap> sources_;
};

// Reads each file into its own scene and calls `visit` with both, even if the file could not be read completely; then
// reports the read error. Returns the exit status. Throws UnusableCatalogue (CatalogueFile.h).
[[nodiscard]] int forEachScene(const SceneArguments& arguments,
                               const std::function<void(const SceneFile&, const Scene&)>& visit,
                               vor::Notices notices = vor::Notices::No);

// The same in parallel: `visit` may run for several files at the same time. The function that it returns is called, and
// the read error reported, in the order of the files and one at a time, after the scene is destroyed.
using Visit = std::function<Finish(SceneFile&, const Scene&)>;
[[nodiscard]] int visitScenes(const SceneArguments& arguments, const Visit& visit,
                              vor::Notices notices = vor::Notices::No);

} // namespace vrn::cli

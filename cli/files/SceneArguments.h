// The scenes that the arguments of a command name.
#pragma once

#include "cli/arguments/Command.h"
#include "cli/files/InOrder.h"
#include "inspect/read/SceneFile.h"
#include "scene/Scene.h"
#include "scene/core/Log.h"

#include <functional>
#include <string>
#include <vector>

namespace vrn::cli {

using inspect::SceneFile;
using vor::velmo_sdk::impl::Scene;

class Progress;

// The scenes that a command reads, and how it reads them.
struct SceneArguments {
    std::vector<std::string> files; // `-` is standard input
    std::string types;              // of loadCatalogue()
    vor::velmo_sdk::impl::SceneLimits limits;
    bool hasFolders = false;   // folders stand for the scenes in them
    vor::u64 jobs = 1;         // number of threads that read; 0 for one a processor
    bool isQuiet = false;      // hides the progress
    bool wantsSources = false; // records the positions of statements for SceneFile::check()
};

// Add the options that set these: files; files, folders and the number of threads; the catalogue and the limits; and
// these and everything else.
void addSceneFiles(std::vector<Option>& options, SceneArguments& arguments);
void addSceneFilesAndFolders(std::vector<Option>& options, SceneArguments& arguments);
void addCatalogueAndLimits(std::vector<Option>& options, SceneArguments& arguments);
void addReadingOptions(std::vector<Option>& options, SceneArguments& arguments);

// Reads a file into `scene` and shows the progress.
void readScene(SceneFile& file, Scene& scene, vor::Notices notices, Progress& progress);

// What was found wrong with the file as text, for standard error.
[[nodiscard]] inline std::string diagnosticsText(const SceneFile& file) {
    return inspect::diagnosticsText(file.diagnosisWithLines());
}

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

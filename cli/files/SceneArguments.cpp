#include "cli/files/SceneArguments.h"

#include "cli/files/CatalogueFile.h"
#include "cli/files/SceneFolders.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "cli/terminal/Progress.h"

#include <algorithm>
#include <filesystem>
#include <string>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

void addSceneFiles(std::vector<Option>& options, SceneArguments& arguments) {
    options.push_back({.names = "FILE",
                       .help = "The scenes to read; - is standard input",
                       .target = &arguments.files,
                       .completion = Completion::Scene,
                       .isRequired = true});
}

void addSceneFilesAndFolders(std::vector<Option>& options, SceneArguments& arguments) {
    arguments.hasFolders = true;
    options.push_back({.names = "FILE",
                       .help = "The scenes to read, or folders to search for *.vrn files; - is standard input",
                       .target = &arguments.files,
                       .completion = Completion::Scene,
                       .isRequired = true});
    options.push_back(
        {.names = "-j,--jobs",
         .help = "Read this many files in parallel, holding as many scenes in memory; 0 for one a processor",
         .target = &arguments.jobs,
         .value = "COUNT",
         .max = 256});
}

void addCatalogueAndLimits(std::vector<Option>& options, SceneArguments& arguments) {
    options.push_back({.names = "--types",
                       .help =
                           "Create nodes by the node types of this catalogue: a JSON file, or builtin for the one in "
                           "the command; the default is the variable VRN_TYPES",
                       .target = &arguments.types,
                       .value = "CATALOGUE",
                       .completion = Completion::File});
    options.push_back({.names = "--max-array",
                       .help = "Limit the number of elements of an array",
                       .target = &arguments.limits.maxArrayElements,
                       .value = "COUNT",
                       .max = u64(1) << 30});
    options.push_back(
        {.names = "--max-unnamed",
         .help = "Limit the number of array elements that a file creates implicitly, by an index beyond the end",
         .target = &arguments.limits.maxImplicitElements,
         .value = "COUNT",
         .max = u64(1) << 60});
    options.push_back({.names = "--max-buffer-bytes",
                       .help = "Limit the size of a buffer in bytes",
                       .target = &arguments.limits.maxBufferBytes,
                       .value = "BYTES",
                       .max = u64(1) << 60});
}

void addReadingOptions(std::vector<Option>& options, SceneArguments& arguments) {
    addCatalogueAndLimits(options, arguments);
    options.push_back(
        {.names = "--quiet", .help = "Do not show progress on the terminal", .target = &arguments.isQuiet});
}

void readScene(SceneFile& file, Scene& scene, Notices notices, Progress& progress) {
    std::error_code error;
    const u64 size = std::filesystem::file_size(file.diagnosis().name.buf(), error);
    u64 unread = error ? 0 : size;
    const auto onFetch = [&](std::size_t bytes) {
        progress.advance(bytes);
        unread -= std::min<u64>(bytes, unread);
    };
    file.read(scene, {.notices = notices, .onFetch = onFetch});
    progress.skip(unread);
}

static std::vector<NamedScene> scenesOf(const SceneArguments& arguments) {
    if (arguments.hasFolders)
        return expandFolders(arguments.files);
    std::vector<NamedScene> scenes;
    for (const std::string& file : arguments.files)
        scenes.push_back({file});
    return scenes;
}

static std::vector<std::string> namesOf(const std::vector<NamedScene>& scenes) {
    std::vector<std::string> names;
    std::ranges::transform(scenes, std::back_inserter(names), &NamedScene::name);
    return names;
}

namespace {

// Reads files one after the other or in parallel.
class SceneReading {
public:
    SceneReading(const SceneArguments& arguments, const Visit& visit, Notices notices)
        : arguments_(arguments), visit_(visit), notices_(notices) {}

    int run() {
        catalogue_ = loadCatalogue(arguments_.types);
        runInOrder(scenes_.size(), arguments_.jobs, [this](std::size_t i, const Turn& turn) {
            SceneFile file{std::string_view(scenes_[i].name)};
            Finish finish;
            try {
                finish = read(file, scenes_[i], turn);
            } catch (const std::bad_alloc&) {
                file.fail(messages::outOfMemory);
                finish = visit_(file, Scene());
            }
            return conclude(file, std::move(finish));
        });
        return status_;
    }

private:
    Finish read(SceneFile& file, const NamedScene& named, const Turn& turn) {
        Scene scene;
        scene.setCatalogue(catalogue_);
        scene.setLimits(arguments_.limits);
        if (!named.trouble.isEmpty())
            file.fail(named.trouble);
        else {
            if (file.isReadOnce()) // two arguments may name the same pipe
                turn.await();
            if (arguments_.wantsSources && catalogue_)
                file.recordSources();
            readScene(file, scene, notices_, progress_);
        }
        return visit_(file, scene);
    }

    Finish conclude(const SceneFile& file, Finish finish) {
        const inspect::Diagnosis& found = file.diagnosis();
        const int status = !found.isWhole() ? exitTrouble : found.hasErrors() ? exitErrors : exitOk;
        return [this, status, finish = std::move(finish), name = found.displayName(), trouble = found.readError] {
            if (finish)
                finish();
            if (!trouble.isEmpty())
                complain(name, trouble);
            status_ = std::max(status_, status);
        };
    }

    const SceneArguments& arguments_;
    const Visit& visit_;
    Notices notices_;
    std::vector<NamedScene> scenes_ = scenesOf(arguments_);
    Progress progress_{namesOf(scenes_), arguments_.isQuiet};
    std::shared_ptr<const Catalogue> catalogue_;
    int status_ = exitOk;
};

} // namespace

int visitScenes(const SceneArguments& arguments, const Visit& visit, Notices notices) {
    return SceneReading(arguments, visit, notices).run();
}

int forEachScene(const SceneArguments& arguments, const std::function<void(const SceneFile&, const Scene&)>& visit,
                 Notices notices) {
    const auto visitWithoutFinish = [&](SceneFile& file, const Scene& scene) {
        visit(file, scene);
        return Finish();
    };
    SceneArguments sequential = arguments; // `visit` need not be thread-safe
    sequential.jobs = 1;
    return visitScenes(sequential, visitWithoutFinish, notices);
}

} // namespace vrn::cli

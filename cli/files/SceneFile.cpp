#include "cli/files/SceneFile.h"

#include "cli/files/CatalogueFile.h"
#include "cli/files/Excerpt.h"
#include "cli/files/Mark.h"
#include "cli/files/SceneFolders.h"
#include "cli/files/TextFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "cli/terminal/Progress.h"
#include "impl/Reader.h"
#include "scene/core/TextEncoding.h"

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

bool SceneFile::isReadOnce() const {
    std::error_code ignored;
    return isStandardInput() || !std::filesystem::is_regular_file(argument_.buf(), ignored);
}

void SceneFile::read(Scene& scene, Notices notices, Progress* progress) {
    File file = isStandardInput() ? File::standardInput() : File::open(argument_);
    u64 unread = 0;
    if (progress) {
        std::error_code error;
        const u64 size = std::filesystem::file_size(argument_.buf(), error);
        unread = error ? 0 : size;
        file.onFetch([&](std::size_t bytes) {
            progress->advance(bytes);
            unread -= std::min<u64>(bytes, unread);
        });
    }
    if (isReadOnce())
        keep(file);
    parse(scene, isKept_ ? open() : file, notices);
    if (progress)
        progress->skip(unread);
}

void SceneFile::parse(Scene& scene, const File& file, Notices notices) {
    const ScopedLogSink sink([this](const LogRecord& record) { add(record); }, notices);
    try {
        isOk_ = sources_ ? parseVrn(&scene, file, false, *sources_) : parseVrn(&scene, file, false);
    } catch (const ReadError& error) {
        add({LogSeverity::Error, error.what(), error.position(), error.format()});
    }
    if (readError_.isEmpty())
        readError_ = file.error();
}

// A file can have a long name repeated in any number of diagnostics, so beyond a total length long messages are
// truncated.
void SceneFile::add(const LogRecord& record) {
    constexpr std::size_t maxTotal = std::size_t(64) << 20;
    constexpr std::size_t truncatedLength = 200;
    diagnostics_.push_back(record);
    String& text = diagnostics_.back().text;
    if (messageBytes_ > maxTotal && text.len() > truncatedLength)
        text = text.substring(0, truncatedLength) + "...";
    messageBytes_ += text.len();
}

void SceneFile::drop(const char* kind) {
    std::erase_if(diagnostics_, [&](const LogRecord& record) {
        const char* name = messageName(record.format);
        return name && std::string_view(name) == kind;
    });
}

void SceneFile::keep(const File& file) {
    kept_ = readAll(file);
    readError_ = file.error();
    isKept_ = true;
}

void SceneFile::fail(const String& reason) {
    diagnostics_ = {};
    isOk_ = false;
    readError_ = reason;
}

File SceneFile::open() const { return isKept_ ? File::fromMemory(kept_) : File::open(argument_); }

std::size_t SceneFile::count(LogSeverity severity) const noexcept {
    return static_cast<std::size_t>(
        std::ranges::count(diagnostics_, severity, [](const LogRecord& record) { return record.severity; }));
}

std::string SceneFile::folder() const {
    return isStandardInput() ? "" : std::filesystem::path(argument_.buf()).parent_path().string();
}

std::size_t SceneFile::warnings() const noexcept { return count(LogSeverity::Warning) + count(LogSeverity::Notice); }

String SceneFile::displayName() const { return isStandardInput() ? "<stdin>" : argument_; }

std::vector<Excerpt> SceneFile::excerpts() const {
    std::vector<TextPosition> positions;
    for (const LogRecord& record : diagnostics_)
        positions.push_back(record.position);
    return readExcerpts(open(), positions);
}

std::vector<TextPosition> SceneFile::characterPositions() const {
    if (diagnostics_.empty())
        return {};
    std::vector<TextPosition> positions;
    for (const Excerpt& excerpt : excerpts()) {
        const i32 line = diagnostics_[positions.size()].position.line;
        positions.push_back(excerpt.exists ? TextPosition{line, static_cast<i32>(excerpt.column)} : TextPosition());
    }
    return positions;
}

std::string SceneFile::diagnosticsText() const {
    if (diagnostics_.empty())
        return {};
    const std::vector<Excerpt> excerpts = this->excerpts();
    const String name = escapeForTerminal(displayName());
    std::string text;
    for (std::size_t i = 0; i < diagnostics_.size(); ++i) {
        const LogRecord& record = diagnostics_[i];
        const char* severity = record.severity == LogSeverity::Error ? "error" : "warning";
        text += String::format("%s:%d:%d: %s: ", name.buf(), record.position.line, record.position.column, severity);
        text += escapeForTerminal(record.text).view();
        text += markOf(record) + '\n';
        text += excerpts[i].withCaret();
    }
    return text;
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
            file.read(scene, notices_, &progress_);
        }
        return visit_(file, scene);
    }

    Finish conclude(const SceneFile& file, Finish finish) {
        const int status = !file.isWhole() ? exitTrouble : file.hasErrors() ? exitErrors : exitOk;
        return [this, status, finish = std::move(finish), name = file.displayName(), trouble = file.readError()] {
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

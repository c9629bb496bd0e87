#include "cli/SceneFile.h"

#include "cli/Console.h"
#include "cli/Excerpt.h"
#include "impl/Reader.h"
#include "scene/CatalogueJson.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <filesystem>
#include <string>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

void addSceneFiles(std::vector<Option>& options, SceneArguments& arguments) {
    options.push_back({.names = "FILE",
                       .help = "Scenes to read; - is standard input",
                       .target = &arguments.files,
                       .completion = Completion::Scene,
                       .isRequired = true});
}

void addReadingOptions(std::vector<Option>& options, SceneArguments& arguments) {
    options.push_back({.names = "--types",
                       .help = "Catalogue of node types (JSON) that new nodes follow",
                       .target = &arguments.types,
                       .value = "CATALOGUE.json",
                       .completion = Completion::File});
    options.push_back({.names = "--max-array",
                       .help = "How many elements one array may have",
                       .target = &arguments.limits.arrayElements,
                       .value = "COUNT",
                       .most = u64(1) << 30});
    options.push_back({.names = "--max-unnamed",
                       .help = "How many elements a text may make by naming one behind them",
                       .target = &arguments.limits.unnamedElements,
                       .value = "COUNT",
                       .most = u64(1) << 60});
    options.push_back({.names = "--max-buffer-bytes",
                       .help = "How many bytes one buffer may take",
                       .target = &arguments.limits.bufferBytes,
                       .value = "BYTES",
                       .most = u64(1) << 60});
}

static std::string readAll(File& file) {
    std::string text;
    for (char c; file.read(c);)
        text += c;
    return text;
}

void SceneFile::read(Scene& scene, Notices notices) {
    std::error_code ignored;
    if (isStandardInput() || !std::filesystem::is_regular_file(argument_.buf(), ignored))
        keep();
    const File file = open();
    const ScopedLogSink sink([this](const LogRecord& record) { add(record); }, notices);
    try {
        isOk_ = parseVrn(&scene, file, false);
    } catch (const ReadError& error) {
        add({LogSeverity::Error, error.what(), error.position()});
    }
    if (readError_.isEmpty())
        readError_ = file.error();
}

// A text may have its name, however long, said as often as it likes: beyond many megabytes of diagnostics only the
// beginnings of long ones are kept.
void SceneFile::add(const LogRecord& record) {
    constexpr std::size_t mostBytes = std::size_t(64) << 20;
    constexpr std::size_t beginning = 200;
    diagnostics_.push_back(record);
    String& text = diagnostics_.back().text;
    if (keptBytes_ > mostBytes && text.len() > beginning)
        text = text.substring(0, beginning) + "...";
    keptBytes_ += text.len();
}

void SceneFile::keep() {
    File file = isStandardInput() ? File::standardInput() : File::open(argument_);
    kept_ = std::string_view(readAll(file));
    readError_ = file.error();
    isKept_ = true;
}

File SceneFile::open() const { return isKept_ ? File::fromMemory(kept_) : File::open(argument_); }

std::size_t SceneFile::count(LogSeverity severity) const noexcept {
    return static_cast<std::size_t>(
        std::ranges::count(diagnostics_, severity, [](const LogRecord& record) { return record.severity; }));
}

std::size_t SceneFile::warnings() const noexcept { return count(LogSeverity::Warning) + count(LogSeverity::Notice); }

String SceneFile::displayName() const { return isStandardInput() ? "<stdin>" : argument_; }

std::string SceneFile::diagnosticsText() const {
    if (diagnostics_.empty())
        return {};
    std::vector<TextPosition> positions;
    for (const LogRecord& record : diagnostics_)
        positions.push_back(record.position);
    const std::vector<Excerpt> excerpts = readExcerpts(open(), positions);
    const String name = escapeForTerminal(displayName());
    std::string text;
    for (std::size_t i = 0; i < diagnostics_.size(); ++i) {
        const LogRecord& record = diagnostics_[i];
        const char* severity = record.severity == LogSeverity::Error ? "error" : "warning";
        text += String::format("%s:%d:%d: %s: ", name.buf(), record.position.line, record.position.column, severity);
        text += escapeForTerminal(record.text).view();
        text += record.severity == LogSeverity::Notice ? " [check]\n" : "\n";
        text += excerpts[i].withCaret();
    }
    return text;
}

std::shared_ptr<const Catalogue> loadCatalogue(const SceneArguments& arguments) {
    if (arguments.types.empty())
        return nullptr;
    const String path = std::string_view(arguments.types);
    File file = File::open(path);
    const std::string text = readAll(file);
    if (!file.error().isEmpty()) {
        complain(path, file.error());
        throw UnusableCatalogue();
    }
    try {
        return std::make_shared<const Catalogue>(readCatalogue(text));
    } catch (const CatalogueError& error) {
        printError(String::format("%s:%d:%d: error: %s\n", escapeForTerminal(path).buf(), error.position().line,
                                  error.position().column, error.what()));
        throw UnusableCatalogue();
    }
}

int forEachScene(const SceneArguments& arguments, const std::function<void(const SceneFile&, const Scene&)>& visit,
                 Notices notices) {
    const auto catalogue = loadCatalogue(arguments);
    int status = exitOk;
    for (const std::string& name : arguments.files) {
        SceneFile file{String(std::string_view(name))};
        Scene scene;
        scene.setCatalogue(catalogue);
        scene.setLimits(arguments.limits);
        try {
            file.read(scene, notices);
            visit(file, scene);
        } catch (const std::bad_alloc&) {
            file.giveUp("out of memory");
        }
        if (!file.isWhole())
            complain(file.displayName(), file.readError());
        const int deserved = !file.isWhole() ? exitTrouble : file.hasErrors() ? exitErrors : exitOk;
        status = std::max(status, deserved);
    }
    return status;
}

} // namespace vrn::cli

#include "inspect/read/SceneFile.h"

#include "impl/Reader.h"
#include "inspect/read/Kind.h"
#include "inspect/text/WholeText.h"
#include "scene/core/TextEncoding.h"

#include <filesystem>
#include <string_view>
#include <utility>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk::impl;

SceneFile::SceneFile(String name, String text) : SceneFile(std::move(name)) {
    auto kept = std::make_shared<const String>(std::move(text));
    kept_ = {kept->view(), kept};
}

SceneFile::SceneFile(String name, std::string_view text, std::shared_ptr<const void> keeper)
    : SceneFile(std::move(name)) {
    kept_ = {text, std::move(keeper)};
}

bool SceneFile::isReadOnce() const {
    std::error_code ignored;
    return !kept_ && (isStandardInput() || !std::filesystem::is_regular_file(diagnosis_.name.buf(), ignored));
}

void SceneFile::read(Scene& scene, const ReadOptions& options) {
    struct Closing {
        ~Closing() { file = File(); } // with what `onFetch` refers to
        File& file;
    } const closing{file_};
    file_ = open();
    if (options.onFetch)
        file_.onFetch(options.onFetch);
    if (isReadOnce()) {
        keep();
        if (file_.isStopped())
            return;
        file_ = open();
        if (options.onFetch)
            file_.onFetch([&](std::size_t) { options.onFetch(0); }); // the bytes are known
    }
    parse(scene, options);
}

void SceneFile::parse(Scene& scene, const ReadOptions& options) {
    const ScopedLogSink sink([this](const LogRecord& record) { add(record); }, options.notices);
    try {
        diagnosis_.isAccepted =
            sources_ ? parseVrn(&scene, file_, options.isMerge, *sources_) : parseVrn(&scene, file_, options.isMerge);
    } catch (const ReadError& error) {
        add({LogSeverity::Error, error.what(), error.position(), error.format()});
    }
    if (diagnosis_.readError.isEmpty())
        diagnosis_.readError = file_.error();
}

void SceneFile::check(const Scene& scene, check::Options options) {
    if (!scene.catalogue() || !sources_ || !diagnosis_.isOk())
        return;
    drop("enumWarning"); // the check finds these strings, too
    options.folder = folder();
    for (const LogRecord& finding : check::checkScene(scene, *scene.catalogue(), *sources_, options))
        add(finding);
}

// A file can have a long name repeated in any number of diagnostics, so beyond a total length long messages are
// truncated.
void SceneFile::add(const LogRecord& record) {
    constexpr std::size_t maxTotal = std::size_t(64) << 20;
    constexpr std::size_t truncatedLength = 200;
    diagnosis_.diagnostics.push_back({record});
    String& text = diagnosis_.diagnostics.back().record.text;
    if (messageBytes_ > maxTotal)
        text = std::string_view(truncated(text.view(), truncatedLength));
    messageBytes_ += text.len();
}

// Removes the diagnostics of a kind.
void SceneFile::drop(const char* kind) {
    std::erase_if(diagnosis_.diagnostics, [&](const Diagnostic& diagnostic) {
        const char* name = kindOf(diagnostic.record);
        return name && std::string_view(name) == kind;
    });
}

void SceneFile::keep() {
    auto kept = std::make_shared<const String>(readAll(file_));
    kept_ = {kept->view(), kept};
    diagnosis_.readError = file_.error();
}

void SceneFile::fail(const String& reason) { diagnosis_ = {.name = diagnosis_.name, .readError = reason}; }

File SceneFile::open() const {
    if (kept_)
        return File::fromMemory(kept_->text, kept_->keeper);
    return isStandardInput() ? File::standardInput() : File::open(diagnosis_.name);
}

Diagnosis SceneFile::diagnosisWithLines() const {
    Diagnosis diagnosis = diagnosis_;
    if (diagnosis.diagnostics.empty())
        return diagnosis;
    std::vector<TextPosition> positions;
    for (const Diagnostic& diagnostic : diagnosis.diagnostics)
        positions.push_back(diagnostic.record.position);
    std::vector<Excerpt> lines = readExcerpts(open(), positions);
    for (std::size_t i = 0; i < lines.size(); ++i)
        diagnosis.diagnostics[i].line = std::move(lines[i]);
    return diagnosis;
}

std::string SceneFile::folder() const {
    return isStandardInput() ? "" : std::filesystem::path(diagnosis_.name.buf()).parent_path().string();
}

} // namespace vrn::inspect

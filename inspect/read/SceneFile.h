// SceneFile: reads a text into a scene and collects what was found wrong with it.
//
//     SceneFile file("scene.vrn");
//     Scene scene;
//     file.read(scene, {.notices = Notices::Yes});
//     if (file.diagnosis().hasErrors())
//         show(diagnosticsText(file.diagnosisWithLines()));
//
// Keeps the text in memory only if it cannot be read again, and no scene. Not thread-safe, but any number of files may
// be read in parallel. Errors are values; only std::bad_alloc is thrown, after which the diagnosis is incomplete.
// Reading is linear in the text.
#pragma once

#include "check/SceneCheck.h"
#include "impl/SourceMap.h"
#include "inspect/read/Diagnosis.h"
#include "scene/Scene.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vrn::inspect {

struct ReadOptions {
    vor::Notices notices = vor::Notices::No;
    // Called with the size of each block that is fetched, or with 0 when the reader works on those it has; together the
    // sizes are that of the text.
    std::function<void(std::size_t)> onFetch{};
    bool isMerge = false; // the scene keeps its version, time and comments
};

class SceneFile {
public:
    // The file at a path; `-` is standard input, `./-` a file of that name. Input that can be read only once, such as a
    // pipe, is kept in memory, so that diagnostics can show its lines.
    explicit SceneFile(vor::String path) { diagnosis_.name = std::move(path); }

    // A text in memory, and what diagnostics call it. The bytes of others are not copied; `keeper` keeps them alive,
    // and is released with this object at the earliest.
    SceneFile(vor::String name, vor::String text);
    SceneFile(vor::String name, std::string_view text, std::shared_ptr<const void> keeper);

    // Whether the file can be read only once, such as a pipe.
    [[nodiscard]] bool isReadOnce() const;

    // From now on, reading records where the text sets what.
    void recordSources() { sources_ = std::make_unique<vor::velmo_sdk::impl::SourceMap>(); }

    // Reads the text into `scene` and keeps the diagnostics, including the notices if requested. An exception that the
    // reader throws for an error counts as a logged one. Beyond a total of 64 MiB, long messages are truncated.
    void read(vor::velmo_sdk::impl::Scene& scene, const ReadOptions& options = {});

    // Ends the read that called `onFetch`, which calls this (File::requestStop).
    void requestStop() noexcept { file_.requestStop(); }

    // Adds what the catalogue of the scene, which was read with recordSources(), finds wrong with it. Nothing if it has
    // none, or if the text was not read to its end: the rest is unknown, so that most findings would be false. The
    // folder of the options is that of the file.
    void check(const vor::velmo_sdk::impl::Scene& scene, check::Options options);

    // Discards the diagnostics and marks the file as unreadable.
    void fail(const vor::String& reason);

    // What was found, without the lines of the text; and with them, which reads it again if anything was found.
    [[nodiscard]] const Diagnosis& diagnosis() const noexcept { return diagnosis_; }
    [[nodiscard]] Diagnosis diagnosisWithLines() const;

    // What relative paths in the scene are relative to; empty for the current folder.
    [[nodiscard]] std::string folder() const;

private:
    [[nodiscard]] bool isStandardInput() const noexcept { return diagnosis_.name == "-"; }
    [[nodiscard]] vor::File open() const;
    void keep();
    void parse(vor::velmo_sdk::impl::Scene& scene, const ReadOptions& options);
    void add(const vor::LogRecord& record);
    void drop(const char* kind);

    // A text in memory, because it came like that or cannot be read again.
    struct Kept {
        std::string_view text;
        std::shared_ptr<const void> keeper;
    };
    std::optional<Kept> kept_;
    vor::File file_; // that is read
    Diagnosis diagnosis_;
    std::size_t messageBytes_ = 0; // total length of the messages
    std::unique_ptr<vor::velmo_sdk::impl::SourceMap> sources_;
};

} // namespace vrn::inspect

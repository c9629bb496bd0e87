#include "cli/commands/Conversion.h"

#include "cli/commands/ConvertReport.h"
#include "cli/files/CatalogueFile.h"
#include "cli/files/Isolated.h"
#include "cli/files/ScratchFolder.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "cli/terminal/Progress.h"
#include "scene/core/OutputFile.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace vrn::cli {

using namespace vor;
using convert::Losses;

namespace {

constexpr u64 bytesPerMiB = 1U << 20;

double metresOf(const std::string& name) {
    return std::ranges::find_if(units, [&](const Unit& unit) { return unit.name == name; })->metres;
}

// Thrown after the reason has been reported.
struct Refusal {
    int status;
};

[[noreturn]] void refuse(const std::string& file, const String& reason, int status = exitTrouble) {
    complain(std::string_view(file), reason);
    throw Refusal{status};
}

bool isStandardStream(const std::string& file) { return file == "-"; }

// The files of the command line: the last one is the output unless it is named.
convert::Request filesOf(const ConvertOptions& options) {
    convert::Request request{.inputs = options.files, .output = options.out};
    if (!request.output.empty())
        return request;
    if (request.inputs.size() < 2)
        refuse("OUT", messages::outputMissing);
    if (request.inputs.size() > 2)
        refuse(request.inputs.back(), messages::outputNotNamed);
    request.output = request.inputs.back();
    request.inputs.pop_back();
    return request;
}

convert::Request requestOf(const ConvertOptions& options) {
    convert::Request request = filesOf(options);
    request.from = options.from;
    request.to = options.to;
    request.inputPlacement.factor = options.scale;
    if (!options.up.empty())
        request.inputPlacement.up = options.up[0];
    if (!options.units.empty())
        request.inputPlacement.metres = metresOf(options.units);
    if (!options.toUp.empty())
        request.outputPlacement.axes = convert::axesFromUp(options.toUp[0]);
    if (!options.toUnits.empty())
        request.outputPlacement.metres = 1 / metresOf(options.toUnits);
    request.images = options.images;
    request.isTriangulated = options.isTriangulated;
    request.isAscii = options.isAscii;
    return request;
}

[[noreturn]] void refuse(const convert::Misuse& misuse) {
    using enum convert::Misuse::Kind;
    switch (misuse.kind) {
    case UnreadableFormat:
        refuse(misuse.file,
               String::format(messages::unreadableExtension, (".vrn " + convert::readableExtensions()).c_str()));
    case UnwritableFormat:
        refuse(misuse.file, String::format(messages::unwritableExtension, convert::writableExtensions().c_str()));
    case OnlyOneForm:
        refuse(misuse.file, messages::onlyOneForm);
    case ImagesTwice:
        refuse(misuse.file, messages::imagesTwice);
    case TrianglesOnlyOfModels:
        break;
    }
    refuse(misuse.file, messages::trianglesOnlyOfModels);
}

class ConvertRun final : convert::Conversion::Steps {
public:
    // Throws Refusal if the arguments make no sense.
    explicit ConvertRun(const ConvertOptions& options) : options_(options), conversion_(requestOf(options)) {
        if (const auto misuse = conversion_.misuse())
            refuse(*misuse);
        const std::string format = conversion_.outputFormat();
        if (isStandardStream(output_) && (format == ".gltf" || format == ".obj"))
            refuse(output_, messages::outputNeedsFolder);
        const bool isPlaced = !options.toUp.empty() || !options.toUnits.empty();
        if (isPlaced && (format == ".gltf" || format == ".glb" || format == ".vrn" || format == ".json"))
            refuse(output_, messages::outputIsPlaced);
        if (std::ranges::count_if(inputs_, isStandardStream) > 1)
            refuse("-", messages::inputTwice);
    }

    // Assimp can crash on malformed files, so it runs in a child process.
    int run() {
        catalogue_ = loadCatalogue(options_.scenes.types);
        const auto work = [&] { return attempt([&] { conversion_.run(losses_, *this); }); };
        if (!conversion_.hasModels())
            return work();
        const ProcessLimits limits{.memory = memoryLimit(), .processorSeconds = processorLimit()};
        const Ending ending = runIsolated(work, limits);
        const std::string name = inputName();
        if (ending.signal == SIGALRM)
            refuse(name, String::format(messages::readerTooSlow, static_cast<unsigned long long>(options_.timeout)));
        if (ending.signal == SIGXCPU)
            refuse(name, messages::readerEndless);
        if (ending.signal == SIGKILL)
            refuse(name, messages::readerKilled);
        if (ending.signal != 0)
            refuse(name, messages::readerCrashed, ending.status);
        return ending.status;
    }

private:
    [[nodiscard]] u64 memoryLimit() const {
        if (options_.maxMemory != 0)
            return std::min(options_.maxMemory, std::numeric_limits<u64>::max() / 2 / bytesPerMiB) * bytesPerMiB;
        constexpr u64 least = 2048 * bytesPerMiB;
        constexpr u64 perByte = 16;
        return least + perByte * inputSize(least / perByte);
    }

    // In seconds. Some readers never end if a file is cut off; a large file takes a tenth of a second for each MiB.
    [[nodiscard]] u64 processorLimit() const {
        constexpr u64 least = 60;
        constexpr u64 ofPipe = 600;
        return options_.timeout != 0 ? 0 : least + inputSize(ofPipe * bytesPerMiB) / bytesPerMiB;
    }

    // In bytes. What cannot be known, such as the size of a pipe, counts as `unknown`.
    [[nodiscard]] u64 inputSize(u64 unknown) const {
        u64 sum = 0;
        for (const std::string& input : inputs_) {
            std::error_code error;
            const u64 size = std::filesystem::file_size(input, error);
            sum += error ? unknown : size;
        }
        return sum;
    }

    // Runs `act` and reports its errors. Returns exitErrors for bad content, exitTrouble for a file that cannot be
    // accessed.
    int attempt(auto act) {
        try {
            act();
            return exitOk;
        } catch (const Refusal& refusal) {
            return refusal.status;
        } catch (const convert::ContentError& error) {
            complain(std::string_view(displayName(error.path())), error.what());
            return exitErrors;
        } catch (const convert::FileError& error) {
            complain(std::string_view(displayName(error.path())), error.what());
        } catch (const OutputFileError& error) {
            complain(std::string_view(displayName(error.path())), strerrordesc_np(error.code().value()));
        } catch (const std::bad_alloc&) {
            const auto limit = static_cast<unsigned long long>(memoryLimit() / bytesPerMiB);
            complain(std::string_view(inputName()), conversion_.hasModels()
                                                        ? String::format(messages::memoryLimit, limit)
                                                        : String(messages::outOfMemory));
        }
        return exitTrouble;
    }

    // The name that the user gave a file.
    [[nodiscard]] std::string displayName(const std::string& path) const {
        if (scratch_ && path.starts_with(scratch_->file("")))
            return path == scratch_->file(outputName()) ? "<stdout>" : "<stdin>";
        return path;
    }

    void prepare(Scene& scene) override {
        scene.setCatalogue(catalogue_);
        scene.setLimits(options_.scenes.limits);
    }

    void readText(Scene& scene, const std::string& input) override {
        SceneFile file{std::string_view(input)};
        {
            Progress progress({input}, options_.scenes.isQuiet);
            readScene(file, scene, Notices::No, progress);
        }
        if (!file.diagnosis().isWhole())
            refuse(std::string(file.diagnosis().displayName().view()), file.diagnosis().readError);
        printError(diagnosticsText(file));
        if (file.diagnosis().hasErrors())
            refuse(std::string(file.diagnosis().displayName().view()), messages::notConverted, exitErrors);
    }

    // Assimp reports its progress for some formats only.
    void readModel(Scene& scene, const std::string& input, const convert::TexturePaths& paths,
                   const convert::ReadOptions& reading) override {
        const TimeLimit limit(options_.timeout);
        const std::string path = isStandardStream(input) ? savedInput() : input;
        Progress progress({input}, options_.scenes.isQuiet);
        progress.startTimer();
        std::error_code error;
        const auto size = static_cast<double>(std::filesystem::file_size(path, error));
        u64 reported = 0;
        convert::readModel(path, scene, losses_, paths, reading, [&](double part) {
            const u64 bytes = error ? 0 : std::max(reported, static_cast<u64>(part * size));
            progress.advance(bytes - std::exchange(reported, bytes));
        });
    }

    // Standard input as a file: readers of models read files.
    std::string savedInput() {
        std::string path = scratch().file("input" + conversion_.inputFormat("-"));
        OutputFile file(path);
        File input = File::standardInput();
        for (std::string_view block = input.readBlock(); !block.empty(); block = input.readBlock())
            file.write(block);
        if (!input.error().isEmpty())
            refuse("<stdin>", input.error());
        file.commit();
        return path;
    }

    // Reports the losses also if nothing is left to be written: they are the reason.
    void write(const Scene& scene, const convert::TexturePaths& paths, const convert::WriteOptions& writing) override {
        try {
            const Progress progress("Writing", options_.scenes.isQuiet);
            if (options_.isStrict) // finds the losses
                convert::writeScene(scene, scratch().file(outputName()), losses_, paths, writing);
            if (isStandardStream(output_))
                writeToStandardOutput(scene, paths, writing);
            else if (!options_.isStrict || losses_.all().empty())
                convert::writeScene(scene, output_, losses_, paths, writing);
        } catch (const convert::ContentError&) {
            report();
            throw;
        }
        report();
        if (options_.isStrict && !losses_.all().empty())
            refuse(output_, messages::strictlyRefused, exitErrors);
    }

    void writeToStandardOutput(const Scene& scene, const convert::TexturePaths& paths,
                               const convert::WriteOptions& writing) {
        const std::string path = scratch().file(outputName());
        if (!options_.isStrict)
            convert::writeScene(scene, path, losses_, paths, writing);
        else if (!losses_.all().empty())
            return;
        File file = File::open(std::string_view(path));
        for (std::string_view block = file.readBlock(); !block.empty(); block = file.readBlock())
            print(block);
        if (!finishOutput())
            throw Refusal{exitTrouble};
    }

    [[nodiscard]] std::string outputName() const { return "output" + conversion_.outputFormat(); }

    void report() const {
        const auto text = options_.losses == "json" ? lossesJson : lossesText;
        printError(text(losses_, inputName(), isStandardStream(output_) ? "<stdout>" : output_));
    }

    [[nodiscard]] std::string inputName() const { return isStandardStream(inputs_[0]) ? "<stdin>" : inputs_[0]; }

    const ScratchFolder& scratch() {
        if (!scratch_)
            scratch_.emplace();
        return *scratch_;
    }

    const ConvertOptions& options_;
    const convert::Conversion conversion_;
    const std::vector<std::string>& inputs_ = conversion_.request().inputs;
    const std::string& output_ = conversion_.request().output;
    std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> catalogue_{};
    Losses losses_{};
    std::optional<ScratchFolder> scratch_{};
};

} // namespace

int convertFiles(const ConvertOptions& options) {
    try {
        return ConvertRun(options).run();
    } catch (const Refusal& refusal) {
        return refusal.status;
    }
}

} // namespace vrn::cli

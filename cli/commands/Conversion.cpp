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

// The format of a file as an extension with its dot, in lower case.
std::string formatOf(const std::string& file, const std::string& format) {
    return format.empty() ? convert::extensionOf(file) : '.' + std::string(String(format).toLower().view());
}

class Conversion {
public:
    // Throws Refusal if the arguments make no sense.
    explicit Conversion(const ConvertOptions& options)
        : options_(options), inputs_(options.files), output_(options.out) {
        if (output_.empty()) {
            if (inputs_.size() < 2)
                refuse("OUT", messages::outputMissing);
            if (inputs_.size() > 2)
                refuse(inputs_.back(), messages::outputNotNamed);
            output_ = inputs_.back();
            inputs_.pop_back();
        }
        checkOutput();
        for (const std::string& input : inputs_)
            checkInput(input);
        if (std::ranges::count_if(inputs_, isStandardStream) > 1)
            refuse("-", messages::inputTwice);
        if (options.images.isEmbedded && (!options.images.copyTo.empty() || !options.images.extractTo.empty()))
            refuse(output_, messages::imagesTwice);
        if (options.isTriangulated && !hasModels())
            refuse(inputs_[0], messages::trianglesOnlyOfModels);
    }

    // Assimp can crash on malformed files, so it runs in a child process.
    int run() {
        const auto catalogue = loadCatalogue(options_.scenes.types);
        const auto work = [&] { return attempt([&] { convert(catalogue); }); };
        if (!hasModels())
            return work();
        const Ending ending = runIsolated(work, memoryLimit());
        const std::string name = inputName();
        if (ending.signal == SIGALRM)
            refuse(name, String::format(messages::readerTooSlow, static_cast<unsigned long long>(options_.timeout)));
        if (ending.signal == SIGKILL)
            refuse(name, messages::readerKilled);
        if (ending.signal != 0)
            refuse(name, messages::readerCrashed, ending.status);
        return ending.status;
    }

private:
    void checkOutput() {
        const std::string format = formatOf(output_, options_.to);
        if (!convert::canWrite(format))
            refuse(output_, String::format(messages::unwritableExtension, convert::writableExtensions().c_str()));
        if (options_.write.isAscii && !convert::hasTwoForms(format))
            refuse(output_, messages::onlyOneForm);
        if (isStandardStream(output_) && (format == ".gltf" || format == ".obj"))
            refuse(output_, messages::outputNeedsFolder);
        const bool isPlaced = !options_.toUp.empty() || !options_.toUnits.empty();
        if (isPlaced && (format == ".gltf" || format == ".glb" || format == ".vrn" || format == ".json"))
            refuse(output_, messages::outputIsPlaced);
    }

    void checkInput(const std::string& input) const {
        const std::string format = formatOf(input, options_.from);
        if (format != ".vrn" && !convert::canRead(format))
            refuse(input,
                   String::format(messages::unreadableExtension, (".vrn " + convert::readableExtensions()).c_str()));
    }

    [[nodiscard]] bool isModel(const std::string& input) const { return formatOf(input, options_.from) != ".vrn"; }
    [[nodiscard]] bool hasModels() const {
        return std::ranges::any_of(inputs_, [&](const std::string& input) { return isModel(input); });
    }

    [[nodiscard]] u64 memoryLimit() const {
        if (options_.maxMemory != 0)
            return std::min(options_.maxMemory, std::numeric_limits<u64>::max() / 2 / bytesPerMiB) * bytesPerMiB;
        constexpr u64 least = 2048 * bytesPerMiB;
        constexpr u64 perByte = 16;
        u64 limit = least;
        for (const std::string& input : inputs_) {
            std::error_code error;
            const u64 size = std::filesystem::file_size(input, error);
            limit += error ? least : perByte * size;
        }
        return limit;
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
            complain(std::string_view(inputName()),
                     hasModels() ? String::format(messages::memoryLimit, limit) : String(messages::outOfMemory));
        }
        return exitTrouble;
    }

    // The name that the user gave a file.
    [[nodiscard]] std::string displayName(const std::string& path) const {
        if (scratch_ && path.starts_with(scratch_->file("")))
            return path == scratch_->file(outputName()) ? "<stdout>" : "<stdin>";
        return path;
    }

    void convert(const std::shared_ptr<const vor::velmo_sdk::impl::Catalogue>& catalogue) {
        Scene scene;
        prepare(scene, catalogue);
        const bool isAlone = inputs_.size() == 1 && !options_.images.isWanted();
        readInto(scene, inputs_[0], isAlone);
        for (std::size_t i = 1; i < inputs_.size(); ++i) {
            Scene more;
            prepare(more, catalogue);
            readInto(more, inputs_[i], isAlone);
            convert::mergeScene(scene, more, losses_);
        }
        convert::place(scene, outputPlacement(), losses_);
        convert::ImageFiles images(options_.images, output_, losses_);
        images.apply(scene);
        write(scene, isAlone && !isModel(inputs_[0]) ? pathsFrom(inputs_[0]) : convert::TexturePaths());
        images.write();
    }

    void prepare(Scene& scene, const std::shared_ptr<const vor::velmo_sdk::impl::Catalogue>& catalogue) const {
        scene.setCatalogue(catalogue);
        scene.setLimits(options_.scenes.limits);
    }

    [[nodiscard]] convert::TexturePaths pathsFrom(const std::string& input) const { return {input, output_}; }

    // The textures of a VRN file that is converted alone are rebased as the format of the output requires.
    void readInto(Scene& scene, const std::string& input, bool isAlone) {
        if (isModel(input))
            return readModel(scene, input);
        readText(scene, input);
        if (!isAlone)
            convert::rebaseTextures(scene, pathsFrom(input));
        convert::place(scene, convert::withOptions({}, inputPlacement()), losses_);
    }

    void readText(Scene& scene, const std::string& input) const {
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
    void readModel(Scene& scene, const std::string& input) {
        const TimeLimit limit(options_.timeout);
        const std::string path = isStandardStream(input) ? savedInput() : input;
        Progress progress({input}, options_.scenes.isQuiet);
        progress.startTimer();
        std::error_code error;
        const auto size = static_cast<double>(std::filesystem::file_size(path, error));
        u64 reported = 0;
        const convert::ReadOptions reading{.format = formatOf(input, options_.from),
                                           .placement = inputPlacement(),
                                           .isTriangulated = options_.isTriangulated};
        convert::readModel(path, scene, losses_, pathsFrom(input), reading, [&](double part) {
            const u64 bytes = error ? 0 : std::max(reported, static_cast<u64>(part * size));
            progress.advance(bytes - std::exchange(reported, bytes));
        });
    }

    // Standard input as a file: readers of models read files.
    std::string savedInput() {
        std::string path = scratch().file("input" + formatOf("-", options_.from));
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
    void write(const Scene& scene, const convert::TexturePaths& paths) {
        try {
            const Progress progress("Writing", options_.scenes.isQuiet);
            if (options_.isStrict) // finds the losses
                convert::writeScene(scene, scratch().file(outputName()), losses_, paths, writing());
            if (isStandardStream(output_))
                writeToStandardOutput(scene, paths);
            else if (!options_.isStrict || losses_.all().empty())
                convert::writeScene(scene, output_, losses_, paths, writing());
        } catch (const convert::ContentError&) {
            report();
            throw;
        }
        report();
        if (options_.isStrict && !losses_.all().empty())
            refuse(output_, messages::strictlyRefused, exitErrors);
    }

    void writeToStandardOutput(const Scene& scene, const convert::TexturePaths& paths) {
        const std::string path = scratch().file(outputName());
        if (!options_.isStrict)
            convert::writeScene(scene, path, losses_, paths, writing());
        else if (!losses_.all().empty())
            return;
        File file = File::open(std::string_view(path));
        for (std::string_view block = file.readBlock(); !block.empty(); block = file.readBlock())
            print(block);
        if (!finishOutput())
            throw Refusal{exitTrouble};
    }

    [[nodiscard]] std::string outputName() const { return "output" + formatOf(output_, options_.to); }

    [[nodiscard]] convert::WriteOptions writing() const {
        convert::WriteOptions writing = options_.write;
        writing.format = formatOf(output_, options_.to);
        return writing;
    }

    [[nodiscard]] convert::PlacementOptions inputPlacement() const {
        convert::PlacementOptions placement{.factor = options_.scale};
        if (!options_.up.empty())
            placement.up = options_.up[0];
        if (!options_.units.empty())
            placement.metres = metresOf(options_.units);
        return placement;
    }

    [[nodiscard]] convert::Placement outputPlacement() const {
        convert::Placement placement;
        if (!options_.toUp.empty())
            placement.axes = convert::axesFromUp(options_.toUp[0]);
        if (!options_.toUnits.empty())
            placement.metres = 1 / metresOf(options_.toUnits);
        return placement;
    }

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
    std::vector<std::string> inputs_;
    std::string output_;
    Losses losses_{};
    std::optional<ScratchFolder> scratch_{};
};

} // namespace

int convertFiles(const ConvertOptions& options) {
    try {
        return Conversion(options).run();
    } catch (const Refusal& refusal) {
        return refusal.status;
    }
}

} // namespace vrn::cli

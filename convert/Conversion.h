// Conversion: from files to a file, as the command and the Python package do it.
//
//     const Conversion conversion({.inputs = {"a.obj", "b.vrn"}, .output = "both.glb"});
//     if (const auto misuse = conversion.misuse())
//         ...                                            // says why, before anything is read
//     conversion.run(losses, steps);
//
// How files are read and written is up to the caller, who shows progress and diagnostics.
#pragma once

#include "convert/Convert.h"

#include <optional>
#include <string>
#include <vector>

namespace vrn::convert {

struct Request {
    std::vector<std::string> inputs{};
    std::string output{};
    // Formats such as `glb`, with or without a dot, in either case; empty for those of the extensions.
    std::string from{};
    std::string to{};
    PlacementOptions inputPlacement{};
    Placement outputPlacement{};
    ImageOptions images{};
    bool isTriangulated = false;
    bool isAscii = false;
};

// Why a request makes no sense.
struct Misuse {
    enum class Kind { UnreadableFormat, UnwritableFormat, OnlyOneForm, ImagesTwice, TrianglesOnlyOfModels };
    Kind kind;
    std::string file;
    std::string format;
};

class Conversion {
public:
    struct Steps {
        virtual ~Steps() = default;
        // Before a scene is read.
        virtual void prepare(Scene&) {}
        virtual void readText(Scene& scene, const std::string& input) = 0; // VRN
        virtual void readModel(Scene& scene, const std::string& input, const TexturePaths& paths,
                               const ReadOptions& options) = 0;
        virtual void write(const Scene& scene, const TexturePaths& paths, const WriteOptions& options) = 0;
    };

    explicit Conversion(Request request);

    [[nodiscard]] std::optional<Misuse> misuse() const;

    // Formats as extensions with their dot, in lower case.
    [[nodiscard]] std::string inputFormat(const std::string& input) const;
    [[nodiscard]] std::string outputFormat() const;

    // Models are all files but those of VRN.
    [[nodiscard]] bool isModel(const std::string& input) const { return inputFormat(input) != ".vrn"; }
    [[nodiscard]] bool hasModels() const;

    [[nodiscard]] const Request& request() const noexcept { return request_; }

    // Reads all inputs into one scene and writes it, with the images that come along. Throws what the steps throw, and
    // FileError and vor::OutputFileError for images.
    void run(Losses& losses, Steps& steps) const;

private:
    [[nodiscard]] bool isAlone() const { return request_.inputs.size() == 1 && !request_.images.isWanted(); }
    void readInto(Scene& scene, const std::string& input, Losses& losses, Steps& steps) const;

    Request request_;
};

} // namespace vrn::convert

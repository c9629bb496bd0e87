#include "convert/Conversion.h"

#include <algorithm>
#include <utility>

namespace vrn::convert {

// The format of a file: the one that is named, or that of its extension.
static std::string formatOf(const std::string& file, const std::string& named) {
    if (named.empty())
        return extensionOf(file);
    return (named.starts_with('.') ? "" : ".") + std::string(String(named).toLower().view());
}

Conversion::Conversion(Request request) : request_(std::move(request)) {}

std::string Conversion::inputFormat(const std::string& input) const { return formatOf(input, request_.from); }
std::string Conversion::outputFormat() const { return formatOf(request_.output, request_.to); }

bool Conversion::hasModels() const {
    return std::ranges::any_of(request_.inputs, [this](const std::string& input) { return isModel(input); });
}

std::optional<Misuse> Conversion::misuse() const {
    using enum Misuse::Kind;
    const std::string to = outputFormat();
    if (!canWrite(to))
        return Misuse{UnwritableFormat, request_.output, to};
    if (request_.isAscii && !hasTwoForms(to))
        return Misuse{OnlyOneForm, request_.output, to};
    for (const std::string& input : request_.inputs)
        if (isModel(input) && !canRead(inputFormat(input)))
            return Misuse{UnreadableFormat, input, inputFormat(input)};
    const ImageOptions& images = request_.images;
    if (images.isEmbedded && (!images.copyTo.empty() || !images.extractTo.empty()))
        return Misuse{ImagesTwice, request_.output, to};
    if (request_.isTriangulated && !hasModels())
        return Misuse{TrianglesOnlyOfModels, request_.inputs.empty() ? "" : request_.inputs[0], ".vrn"};
    return {};
}

void Conversion::run(Losses& losses, Steps& steps) const {
    Scene scene;
    readInto(scene, request_.inputs[0], losses, steps);
    for (std::size_t i = 1; i < request_.inputs.size(); ++i) {
        Scene more;
        readInto(more, request_.inputs[i], losses, steps);
        mergeScene(scene, more, losses);
    }
    place(scene, request_.outputPlacement, losses);
    ImageFiles images(request_.images, request_.output, losses);
    images.apply(scene);
    const bool isRebased = !isAlone() || isModel(request_.inputs[0]);
    steps.write(scene, isRebased ? TexturePaths() : TexturePaths(request_.inputs[0], request_.output),
                {.format = outputFormat(), .isAscii = request_.isAscii});
    images.write();
}

// The textures of a VRN file that is converted alone are rebased as the format of the output requires.
void Conversion::readInto(Scene& scene, const std::string& input, Losses& losses, Steps& steps) const {
    const TexturePaths paths(input, request_.output);
    steps.prepare(scene);
    if (isModel(input))
        return steps.readModel(scene, input, paths,
                               {.format = inputFormat(input),
                                .placement = request_.inputPlacement,
                                .isTriangulated = request_.isTriangulated});
    steps.readText(scene, input);
    if (!isAlone())
        rebaseTextures(scene, paths);
    place(scene, withOptions({}, request_.inputPlacement), losses);
}

} // namespace vrn::convert

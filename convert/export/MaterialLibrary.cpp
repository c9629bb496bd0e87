#include "convert/export/MaterialLibrary.h"

#include "convert/export/ByteSink.h"
#include "convert/export/NumberLines.h"
#include "convert/export/SingleLine.h"
#include "convert/model/Inputs.h"

namespace vrn::convert {

namespace {

class LibraryWriter {
public:
    LibraryWriter(vor::OutputFile& file, const Model& model, Losses& losses)
        : out_(file), model_(model), losses_(losses) {}

    void add(const Material& material, const std::string& name) {
        out_.add("newmtl " + name + '\n');
        addNumbers("Kd ", std::span(material.baseColor).first(3));
        const double opacity = material.alphaMode == "opaque" ? 1 : material.baseColor[3];
        addNumbers("d ", {&opacity, 1});
        addNumbers("Ke ", material.emission);
        addNumbers("Pr ", {&material.roughness, 1});
        addNumbers("Pm ", {&material.metallic, 1});
        addMap("map_Kd", "", material.map(Map::BaseColor));
        if (material.alphaMode == "blend")
            addMap("map_d", " -imfchan m", material.map(Map::BaseColor)); // the alpha of the image
        addMap("map_Ke", "", material.map(Map::Emission));
        addMap("map_Pr", " -imfchan g", material.map(Map::MetallicRoughness));
        addMap("map_Pm", " -imfchan b", material.map(Map::MetallicRoughness));
        addMap("norm", "", material.map(Map::Normal));
        addLosses(material);
    }
    void addNone() { out_.add("newmtl " + std::string(noMaterialName) + '\n'); }
    void finish() { out_.flush(); }

private:
    void addNumbers(std::string_view keyword, std::span<const double> numbers) {
        const std::vector<float> rounded = roundAll(numbers);
        addNumberLines<float>(out_, keyword, rounded, rounded.size());
    }

    void addMap(const char* keyword, const char* option, const TextureUse& use) {
        if (use.texture == none || model_.textures[use.texture].image.file.empty())
            return;
        const Texture& texture = model_.textures[use.texture];
        out_.add(std::string(keyword) + option);
        if (texture.wrapU == "clamp" && texture.wrapV == "clamp")
            out_.add(" -clamp on");
        addTransform(use);
        if (use.rotation != 0)
            losses_.add("rotations of textures", *texture.source);
        if (use.uvset != 0)
            losses_.add("textures on uvsets other than the first", *texture.source);
        const std::string file = singleLine(texture.image.file);
        if (file != texture.image.file)
            losses_.add("paths of textures that begin or end with spaces, or contain control characters",
                        *texture.source);
        out_.add((file.starts_with('-') ? " ./" : " ") + file + '\n'); // not an option
    }

    // With v counted from the lower edge of the image.
    void addTransform(const TextureUse& use) {
        const Vector offset = {use.offset[0], 1 - use.offset[1] - use.scale[1], 0};
        const Vector scale = {use.scale[0], use.scale[1], 1};
        if (!fitsFloat(offset[1]))
            return losses_.add("transforms of textures beyond the range of a float",
                               *model_.textures[use.texture].source);
        if (offset != Vector{0, 0, 0})
            addVector(" -o ", offset);
        if (scale != Vector{1, 1, 1})
            addVector(" -s ", scale);
    }

    void addVector(std::string_view option, const Vector& vector) {
        const std::vector<float> rounded = roundAll(vector);
        char text[3 * vor::listNumberCapacity + vor::listSlack];
        const char* const end = vor::writeNumberList(std::span<const float>(rounded), text);
        out_.add(option);
        out_.add({text, static_cast<std::size_t>(end - text) - 1});
    }

    static std::vector<float> roundAll(std::span<const double> numbers) {
        std::vector<float> rounded;
        for (const double number : numbers)
            rounded.push_back(static_cast<float>(number));
        return rounded;
    }

    void addLosses(const Material& material) {
        if (material.map(Map::Occlusion).texture != none)
            losses_.add("occlusion maps of materials", *material.source);
        if (material.map(Map::Normal).factor != 1)
            losses_.add("scales of normal maps", *material.source);
        if (material.alphaMode == "opaque" && material.baseColor[3] != 1)
            losses_.add("alpha of opaque materials", *material.source);
        if (material.isDoubleSided)
            losses_.add("materials that show both sides", *material.source);
        if (material.alphaMode == "mask")
            losses_.add("alpha cutoffs of materials", *material.source);
    }

    ByteSink out_;
    const Model& model_;
    Losses& losses_;
};

} // namespace

void writeMaterialLibrary(vor::OutputFile& file, const Model& model, const std::vector<std::string>& names,
                          Losses& losses) {
    LibraryWriter writer(file, model, losses);
    for (std::size_t i = 0; i < names.size(); ++i)
        writer.add(model.materials[i], names[i]);
    writer.addNone();
    writer.finish();
    for (const Texture& texture : model.textures) {
        if (!texture.image.encoded.empty())
            losses.add("embedded images of textures", *texture.source);
        const auto isRepeat = [](const std::string& mode) { return mode.empty() || mode == "repeat"; };
        const bool isClamp = texture.wrapU == "clamp" && texture.wrapV == "clamp";
        if (texture.filter != 0 || texture.magFilter != 0 ||
            !(isClamp || (isRepeat(texture.wrapU) && isRepeat(texture.wrapV))))
            losses.add("filters and wrap modes of textures other than repeat and clamp", *texture.source);
    }
}

} // namespace vrn::convert

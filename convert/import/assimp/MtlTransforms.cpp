#include "convert/import/assimp/MtlTransforms.h"

#include "convert/import/Words.h"
#include "scene/core/NumberText.h"

#include <algorithm>

namespace vrn::convert {

namespace {

struct MapKeyword {
    std::string_view keyword;
    aiTextureType type;
};
constexpr MapKeyword mapKeywords[] = {{"map_kd", aiTextureType_DIFFUSE},          {"map_ke", aiTextureType_EMISSIVE},
                                      {"map_emissive", aiTextureType_EMISSIVE},   {"norm", aiTextureType_NORMALS},
                                      {"map_kn", aiTextureType_NORMALS},          {"map_pm", aiTextureType_METALNESS},
                                      {"map_pr", aiTextureType_DIFFUSE_ROUGHNESS}};

// Takes up to three numbers, of which the first two count. The others keep their values.
void takeNumbers(std::string_view& text, std::array<double, 2>& numbers) {
    for (std::size_t i = 0; i < 3; ++i) {
        std::string_view rest = text;
        double number = 0;
        if (!vor::parseReal(takeWord(rest), number))
            return;
        if (i < 2)
            numbers[i] = number;
        text = rest;
    }
}

} // namespace

std::string MtlTransforms::take(std::string_view library) {
    std::string rest;
    while (!library.empty()) {
        const std::string_view line = takeLine(library);
        std::string_view values = line;
        const std::string keyword(String(takeWord(values)).toLower().view());
        if (keyword == "newmtl")
            material_ = values;
        const auto* map = std::ranges::find(mapKeywords, keyword, &MapKeyword::keyword);
        rest += map == std::end(mapKeywords) ? std::string(line) : takeFromMap(line, map->type);
        rest += '\n';
    }
    return rest;
}

// A map has options and then a file, whose name may contain spaces.
std::string MtlTransforms::takeFromMap(std::string_view line, aiTextureType type) {
    std::string rest(takeWord(line));
    MtlTransform transform;
    while (line.starts_with('-')) {
        const std::string_view option = takeWord(line);
        std::array<double, 2> turbulence = {0, 0};
        if (option == "-o" || option == "-s") {
            takeNumbers(line, option == "-o" ? transform.offset : transform.scale);
        } else if (option == "-t") {
            takeNumbers(line, turbulence);
            losses_.add("turbulence of textures", String(std::string_view(material_)));
        } else if (option == "-mm") {
            takeNumbers(line, turbulence);
            losses_.add("changes of the values of textures (-mm)", String(std::string_view(material_)));
        } else {
            rest += ' ' + std::string(option);
            rest += ' ' + std::string(takeWord(line));
        }
    }
    if (transform.offset != std::array{0.0, 0.0} || transform.scale != std::array{1.0, 1.0})
        transforms_[{material_, type}] = transform;
    return rest + ' ' + std::string(line);
}

const MtlTransform* MtlTransforms::find(std::string_view material, aiTextureType type) const {
    const auto found = transforms_.find({std::string(material), type});
    return found == transforms_.end() ? nullptr : &found->second;
}

} // namespace vrn::convert

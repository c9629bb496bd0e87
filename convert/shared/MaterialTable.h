// The numbers and texture maps of materials that have one and the same meaning here and in glTF: what they are called
// in both, and their defaults. Importing, reading a material from a scene and exporting all follow these tables.
#pragma once

#include <array>
#include <cstddef>
#include <limits>

namespace vrn::convert {

inline constexpr double unlimited = static_cast<double>(std::numeric_limits<float>::max());

// A number, or a colour of three.
struct MaterialNumber {
    const char* extension;
    const char* member;
    const char* input;
    std::size_t components;
    double fallback; // of each component
    double min;
    double max;
    bool isAngle = false; // in radians in glTF, in degrees here
};
inline constexpr MaterialNumber materialNumbers[] = {
    {"KHR_materials_emissive_strength", "emissiveStrength", "emission.strength", 1, 1, 0, unlimited},
    {"KHR_materials_clearcoat", "clearcoatFactor", "clearcoat.factor", 1, 0, 0, 1},
    {"KHR_materials_clearcoat", "clearcoatRoughnessFactor", "clearcoat.roughness", 1, 0, 0, 1},
    {"KHR_materials_transmission", "transmissionFactor", "transmission.factor", 1, 0, 0, 1},
    {"KHR_materials_volume", "thicknessFactor", "volume.thickness", 1, 0, 0, unlimited},
    {"KHR_materials_volume", "attenuationDistance", "volume.attenuationDistance", 1, 0, 0, unlimited}, // 0: infinite
    {"KHR_materials_volume", "attenuationColor", "volume.attenuationColor", 3, 1, 0, 1},
    {"KHR_materials_ior", "ior", "ior", 1, 1.5, 0, unlimited},
    {"KHR_materials_sheen", "sheenColorFactor", "sheen.color", 3, 0, 0, 1},
    {"KHR_materials_sheen", "sheenRoughnessFactor", "sheen.roughness", 1, 0, 0, 1},
    {"KHR_materials_specular", "specularFactor", "specular.factor", 1, 1, 0, 1},
    {"KHR_materials_specular", "specularColorFactor", "specular.color", 3, 1, 0, unlimited},
    {"KHR_materials_anisotropy", "anisotropyStrength", "anisotropy.strength", 1, 0, 0, 1},
    {"KHR_materials_anisotropy", "anisotropyRotation", "anisotropy.rotation", 1, 0, -unlimited, unlimited, true},
    {"KHR_materials_iridescence", "iridescenceFactor", "iridescence.factor", 1, 0, 0, 1},
    {"KHR_materials_iridescence", "iridescenceIor", "iridescence.ior", 1, 1.3, 1, unlimited},
    {"KHR_materials_iridescence", "iridescenceThicknessMinimum", "iridescence.minThickness", 1, 100, 0, unlimited},
    {"KHR_materials_iridescence", "iridescenceThicknessMaximum", "iridescence.maxThickness", 1, 400, 0, unlimited},
    {"KHR_materials_dispersion", "dispersion", "dispersion", 1, 0, 0, unlimited},
};

// A texture map. `group` is the object in glTF that contains it: the material itself if empty, or an extension of it.
struct MaterialMap {
    const char* group;
    const char* member;
    const char* input;
    const char* xform;
    const char* factor = nullptr;      // in glTF, a member of the map with the default 1, if it has one
    const char* factorInput = nullptr; // and its name here
};
enum class Map : std::size_t { BaseColor, MetallicRoughness, Normal, Occlusion, Emission }; // of the core model
inline constexpr MaterialMap materialMaps[] = {
    {"pbrMetallicRoughness", "baseColorTexture", "baseColorMap", "baseColorXform"},
    {"pbrMetallicRoughness", "metallicRoughnessTexture", "metallicRoughnessMap", "metallicRoughnessXform"},
    {"", "normalTexture", "normalMap", "normalXform", "scale", "normalScale"},
    {"", "occlusionTexture", "occlusionMap", "occlusionXform", "strength", "occlusionStrength"},
    {"", "emissiveTexture", "emission.map", "emissionXform"},
    {"KHR_materials_clearcoat", "clearcoatTexture", "clearcoat.map", "clearcoat.xform"},
    {"KHR_materials_clearcoat", "clearcoatRoughnessTexture", "clearcoat.roughnessMap", "clearcoat.roughnessXform"},
    {"KHR_materials_clearcoat", "clearcoatNormalTexture", "clearcoat.normalMap", "clearcoat.normalXform", "scale",
     "clearcoat.normalScale"},
    {"KHR_materials_transmission", "transmissionTexture", "transmission.map", "transmission.xform"},
    {"KHR_materials_volume", "thicknessTexture", "volume.thicknessMap", "volume.thicknessXform"},
    {"KHR_materials_sheen", "sheenColorTexture", "sheen.colorMap", "sheen.colorXform"},
    {"KHR_materials_sheen", "sheenRoughnessTexture", "sheen.roughnessMap", "sheen.roughnessXform"},
    {"KHR_materials_specular", "specularTexture", "specular.map", "specular.xform"},
    {"KHR_materials_specular", "specularColorTexture", "specular.colorMap", "specular.colorXform"},
    {"KHR_materials_anisotropy", "anisotropyTexture", "anisotropy.map", "anisotropy.xform"},
    {"KHR_materials_iridescence", "iridescenceTexture", "iridescence.map", "iridescence.xform"},
    {"KHR_materials_iridescence", "iridescenceThicknessTexture", "iridescence.thicknessMap",
     "iridescence.thicknessXform"},
};

inline constexpr std::size_t materialNumberCount = std::size(materialNumbers);
inline constexpr std::size_t materialMapCount = std::size(materialMaps);

} // namespace vrn::convert

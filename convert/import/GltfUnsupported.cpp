#include "convert/import/GltfUnsupported.h"

#include <set>

namespace vrn::convert {

namespace {

bool differs(const GltfValue* number, double defaultValue) {
    return number && number->IsNumber() && number->GetDouble() != defaultValue;
}

void checkTexture(const GltfValue* use, std::set<std::string>& features) {
    if (!use)
        return;
    if (differs(memberOf(use, "texCoord"), 0))
        features.insert("textures on uvsets other than the first");
    if (differs(memberOf(use, "scale"), 1))
        features.insert("scales of normal maps");
    if (differs(memberOf(use, "strength"), 1))
        features.insert("strengths of occlusion maps");
}

void checkMaterial(const GltfValue& material, std::set<std::string>& features) {
    const GltfValue* metallicRoughness = memberOf(&material, "pbrMetallicRoughness");
    for (const char* name : {"baseColorTexture", "metallicRoughnessTexture"})
        checkTexture(memberOf(metallicRoughness, name), features);
    for (const char* name : {"normalTexture", "occlusionTexture", "emissiveTexture"})
        checkTexture(memberOf(&material, name), features);
    if (memberOf(memberOf(&material, "extensions"), "KHR_materials_emissive_strength"))
        features.insert("strengths of emission");
}

} // namespace

std::vector<std::string> unsupportedFeatures(const GltfValue& json) {
    std::set<std::string> features;
    const GltfValue* scenes = memberOf(&json, "scenes");
    if (scenes && scenes->IsArray() && scenes->Size() > 1)
        features.insert("scenes other than the default scene");
    for (u64 i = 0; const GltfValue* material = itemOf(json, "materials", i); ++i)
        checkMaterial(*material, features);
    return {features.begin(), features.end()};
}

} // namespace vrn::convert

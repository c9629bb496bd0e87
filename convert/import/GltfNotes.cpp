#include "convert/import/GltfNotes.h"

#include <set>

namespace vrn::convert {

using namespace vor;

namespace {

bool isOther(const GltfValue* number, double usual) {
    return number && number->IsNumber() && number->GetDouble() != usual;
}

// What a use of a texture says besides which one it is.
void noteTexture(const GltfValue* use, std::set<std::string>& lost) {
    if (!use)
        return;
    if (isOther(memberOf(use, "texCoord"), 0))
        lost.insert("textures that go by other uvsets than the first");
    if (isOther(memberOf(use, "scale"), 1))
        lost.insert("scales of normal maps");
    if (isOther(memberOf(use, "strength"), 1))
        lost.insert("strengths of occlusion maps");
}

void noteMaterial(const GltfValue& material, std::set<std::string>& lost) {
    const GltfValue* metal = memberOf(&material, "pbrMetallicRoughness");
    for (const char* name : {"baseColorTexture", "metallicRoughnessTexture"})
        noteTexture(memberOf(metal, name), lost);
    for (const char* name : {"normalTexture", "occlusionTexture", "emissiveTexture"})
        noteTexture(memberOf(&material, name), lost);
    if (memberOf(memberOf(&material, "extensions"), "KHR_materials_emissive_strength"))
        lost.insert("strengths of emission");
}

} // namespace

std::vector<std::string> lostParts(const GltfValue& json) {
    std::set<std::string> lost;
    const GltfValue* scenes = memberOf(&json, "scenes");
    if (scenes && scenes->IsArray() && scenes->Size() > 1)
        lost.insert("scenes other than the one that is shown first");
    for (u64 i = 0; const GltfValue* material = itemOf(json, "materials", i); ++i)
        noteMaterial(*material, lost);
    return {lost.begin(), lost.end()};
}

} // namespace vrn::convert

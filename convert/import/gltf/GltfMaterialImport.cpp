#include "convert/import/gltf/GltfMaterialImport.h"

#include "convert/shared/MaterialTable.h"
#include "convert/shared/Transform.h"

#include <algorithm>
#include <string>

namespace vrn::convert {

namespace {

class GltfMaterialReader {
public:
    GltfMaterialReader(GltfContext& context, const GltfValue& material)
        : context_(context), material_(material), node_(context.create("material", material, "material")) {}

    Node* read() {
        readCoreModel();
        readAlpha();
        for (const MaterialNumber& number : materialNumbers)
            readNumber(number);
        for (const MaterialMap& map : materialMaps)
            readMap(map);
        if (const GltfValue unlit = material_.extension("KHR_materials_unlit"); unlit.exists()) {
            if (!unlit.isObject())
                unlit.refuse("it is not an object");
            set(node_, "unlit", AttrData::boolean(true));
        }
        return &node_;
    }

private:
    // The default of `metallic` is 1 in glTF and 0 here, so these are always set.
    void readCoreModel() {
        const GltfValue core = material_["pbrMetallicRoughness"];
        setNumbers(node_, "baseColor", AttrType::Rgba, core["baseColorFactor"].numbers<4>({1, 1, 1, 1}));
        set(node_, "metallic", AttrData::real(core["metallicFactor"].number(1)));
        set(node_, "roughness", AttrData::real(core["roughnessFactor"].number(1)));
        const auto emission = material_["emissiveFactor"].numbers<3>({0, 0, 0});
        if (emission != std::array<double, 3>{})
            setAt(node_, "emission.color", valueOf(AttrType::Vec3, emission));
        set(node_, "doubleSided", AttrData::boolean(material_["doubleSided"].boolean(false)));
    }

    void readAlpha() {
        const GltfValue mode = material_["alphaMode"];
        const std::string_view name = mode.text("OPAQUE");
        const char* alpha = name == "OPAQUE" ? "opaque" : name == "MASK" ? "mask" : name == "BLEND" ? "blend" : nullptr;
        if (!alpha)
            mode.refuse("it is no alpha mode");
        setAt(node_, "alpha.mode", AttrData::string(alpha));
        if (const GltfValue cutoff = material_["alphaCutoff"]; cutoff.exists())
            setAt(node_, "alpha.cutoff", AttrData::real(cutoff.number(0)));
    }

    void readNumber(const MaterialNumber& number) {
        const GltfValue value = material_.extension(number.extension)[number.member];
        if (!value.exists())
            return;
        const double unit = number.isAngle ? degreesPerRadian : 1;
        if (number.components == 1)
            setAt(node_, number.input, AttrData::real(value.number(0) * unit));
        else
            setAt(node_, number.input, valueOf(AttrType::Vec3, value.numbers<3>({})));
    }

    void readMap(const MaterialMap& map) {
        const std::string_view group = map.group;
        const GltfValue parent = group.starts_with("KHR_") ? material_.extension(map.group)
                                 : group.empty()           ? material_
                                                           : material_[map.group];
        const GltfValue use = parent[map.member];
        if (!use.exists())
            return;
        Node& texture = *context_.textures[use["index"].indexIn(context_.root["textures"])];
        connectAt(node_, map.input, texture, "outColor");
        readXform(use, std::string(map.xform) + ".");
        if (map.factor && use[map.factor].exists())
            setAt(node_, map.factorInput, AttrData::real(use[map.factor].number(1)));
    }

    // The transform's own texture coordinates replace those of the map.
    void readXform(const GltfValue& use, const std::string& prefix) {
        const GltfValue xform = use.extension("KHR_texture_transform");
        const u64 uvset = use["texCoord"].whole(0, 1 << 16);
        if (const u64 own = xform["texCoord"].whole(uvset, 1 << 16); own != 0)
            setAt(node_, prefix + "uvset", AttrData::unsignedInteger(own));
        if (const GltfValue offset = xform["offset"]; offset.exists())
            setAt(node_, prefix + "offset", valueOf(AttrType::Vec2, offset.numbers<2>({})));
        if (const GltfValue scale = xform["scale"]; scale.exists())
            setAt(node_, prefix + "scale", valueOf(AttrType::Vec2, scale.numbers<2>({})));
        if (const GltfValue rotation = xform["rotation"]; rotation.exists())
            setAt(node_, prefix + "rotation", AttrData::real(rotation.number(0) * degreesPerRadian));
    }

    GltfContext& context_;
    const GltfValue& material_;
    Node& node_;
};

} // namespace

void importMaterials(GltfContext& context) {
    context.root["materials"].forEach([&](const GltfValue& material, u64) {
        context.materials.push_back(GltfMaterialReader(context, material).read());
    });
}

} // namespace vrn::convert

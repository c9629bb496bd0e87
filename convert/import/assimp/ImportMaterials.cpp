#include "convert/import/assimp/ImportMaterials.h"

#include "convert/import/assimp/AssimpValues.h"
#include "convert/shared/NodeInputs.h"

#include <algorithm>
#include <array>
#include <assimp/material.h>
#include <span>

namespace vrn::convert {

namespace {

// The imported texture maps. Of several for the same input, the first one that a material has is used.
struct TextureMap {
    aiTextureType type;
    const char* object; // or null
    const char* input;
    const char* xform;
};
constexpr TextureMap textureMaps[] = {
    {aiTextureType_BASE_COLOR, nullptr, "baseColorMap", "baseColorXform"},
    {aiTextureType_DIFFUSE, nullptr, "baseColorMap", "baseColorXform"},
    {aiTextureType_NORMALS, nullptr, "normalMap", "normalXform"},
    {aiTextureType_METALNESS, nullptr, "metallicRoughnessMap", "metallicRoughnessXform"},
    {aiTextureType_DIFFUSE_ROUGHNESS, nullptr, "metallicRoughnessMap", "metallicRoughnessXform"},
    {aiTextureType_UNKNOWN, nullptr, "metallicRoughnessMap", "metallicRoughnessXform"},
    {aiTextureType_LIGHTMAP, nullptr, "occlusionMap", "occlusionXform"},
    {aiTextureType_EMISSIVE, "emission", "map", "emissionXform"},
};

// Properties that are imported or redundant.
constexpr std::string_view knownProperties[] = {
    "?mat.name",     "$clr.base",           "$clr.diffuse",         "$mat.opacity",
    "$clr.emissive", "$mat.metallicFactor", "$mat.roughnessFactor", "$mat.twosided",
    "$mat.shadingm"};

class MaterialImport {
public:
    MaterialImport(ImportContext& context, const aiMaterial& from) : context_(context), from_(from) {}

    Node* read(std::string_view name) {
        node_ = &context_.create("material", name, "material");
        setBaseColor();
        setFactor("metallic", AI_MATKEY_METALLIC_FACTOR);
        setFactor("roughness", AI_MATKEY_ROUGHNESS_FACTOR);
        if (aiColor3D color; from_.Get(AI_MATKEY_COLOR_EMISSIVE, color) == AI_SUCCESS && !color.IsBlack())
            setMember(*node_->createInput("emission", AttrType::Object), "color",
                      valueOf(AttrType::Vec3, std::array{shortestDecimal(color.r), shortestDecimal(color.g),
                                                         shortestDecimal(color.b)}));
        setAlpha();
        if (int isDoubleSided = 0; from_.Get(AI_MATKEY_TWOSIDED, isDoubleSided) == AI_SUCCESS)
            set(*node_, "doubleSided", AttrData::boolean(isDoubleSided != 0));
        for (const TextureMap& map : textureMaps)
            connectMap(map);
        reportUnknownProperties();
        return node_;
    }

private:
    void setBaseColor() {
        aiColor4D color(1, 1, 1, 1);
        if (from_.Get(AI_MATKEY_BASE_COLOR, color) != AI_SUCCESS)
            (void)from_.Get(AI_MATKEY_COLOR_DIFFUSE, color);
        float opacity = 1;
        if (from_.Get(AI_MATKEY_OPACITY, opacity) == AI_SUCCESS && opacity < 1)
            color.a = opacity;
        setNumbers(*node_, "baseColor", AttrType::Rgba,
                   std::array{shortestDecimal(color.r), shortestDecimal(color.g), shortestDecimal(color.b),
                              shortestDecimal(color.a)});
        isTranslucent_ = color.a < 1;
    }

    // Assimp computes the roughness of a shiny material from an exponent, which may be of any size.
    void setFactor(const char* name, const char* key, unsigned type, unsigned index) {
        float factor = 0;
        if (from_.Get(key, type, index, factor) != AI_SUCCESS)
            return;
        const bool isInRange = factor >= 0 && factor <= 1;
        const float nearest = factor > 1 ? 1.F : 0.F; // 0 for what is no number
        set(*node_, name, AttrData::real(shortestDecimal(isInRange ? factor : nearest)));
        if (!isInRange)
            context_.losses.add("numbers of materials out of range (clamped)", *node_->input(name));
    }

    void setAlpha() {
        Input& alpha = *node_->createInput("alpha", AttrType::Object);
        setMember(alpha, "mode", AttrData::string(isTranslucent_ ? "blend" : "opaque"));
    }

    void connectMap(const TextureMap& map) {
        aiString file;
        if (from_.Get(AI_MATKEY_TEXTURE(map.type, 0), file) != AI_SUCCESS)
            return;
        if (map.object) {
            Input& object = *node_->createInput(map.object, AttrType::Object);
            if (Input* input = object.createInput(map.input, AttrType::Null); !input->connection()) {
                input->connect(textureNode(map.type, file).findOutput("outColor"));
                setXform(map);
            }
        } else if (!node_->hasInput(map.input)) {
            connect(*node_, map.input, textureNode(map.type, file), "outColor");
            setXform(map);
        }
        if (from_.GetTextureCount(map.type) > 1)
            context_.losses.add("further textures of the same map", *node_);
    }

    // Assimp's offset is relative to the lower left corner of the image, ours to the upper left one.
    void setXform(const TextureMap& map) {
        aiUVTransform xform;
        if (const MtlTransform* known = context_.mtl.find(viewOf(from_.GetName()), map.type))
            return setXform(map, known->offset, known->scale);
        if (from_.Get(AI_MATKEY_UVTRANSFORM(map.type, 0), xform) != AI_SUCCESS)
            return;
        if (xform.mRotation != 0)
            context_.losses.add("rotations of textures", *node_);
        setXform(map, {static_cast<double>(xform.mTranslation.x), static_cast<double>(xform.mTranslation.y)},
                 {static_cast<double>(xform.mScaling.x), static_cast<double>(xform.mScaling.y)});
    }

    void setXform(const TextureMap& map, const std::array<double, 2>& from, const std::array<double, 2>& scale) {
        const std::array<double, 2> offset = {from[0], 1 - scale[1] - from[1]};
        Input& object = *node_->createInput(map.xform, AttrType::Object);
        setMember(object, "offset", valueOf(AttrType::Vec2, offset));
        setMember(object, "scale", valueOf(AttrType::Vec2, scale));
    }

    [[nodiscard]] const char* wrapMode(aiTextureMapMode mode) {
        switch (mode) {
        case aiTextureMapMode_Wrap:
            return "repeat";
        case aiTextureMapMode_Mirror:
            return "mirror";
        case aiTextureMapMode_Clamp:
            return "clamp";
        default:
            context_.losses.add("decal textures, which do not repeat", *node_);
            return "clamp";
        }
    }

    Node& textureNode(aiTextureType type, const aiString& file) {
        int wrapU = aiTextureMapMode_Wrap;
        int wrapV = aiTextureMapMode_Wrap;
        (void)from_.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), wrapU);
        (void)from_.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), wrapV);
        const String key = String::format("%d %d ", wrapU, wrapV) + String(viewOf(file));
        Node*& known = context_.textures[std::string(key.view())];
        if (known)
            return *known;
        known = createTexture(viewOf(file));
        setText(*known, "wrapU", wrapMode(static_cast<aiTextureMapMode>(wrapU)));
        setText(*known, "wrapV", wrapMode(static_cast<aiTextureMapMode>(wrapV)));
        return *known;
    }

    Node* createTexture(std::string_view file) {
        const aiTexture* embedded = context_.from.GetEmbeddedTexture(std::string(file).c_str());
        if (embedded)
            return createEmbeddedTexture(*embedded);
        const std::string path(file);
        const std::size_t folder = path.find_last_of("/\\");
        const std::string name = folder == std::string::npos ? path : path.substr(folder + 1);
        Node& texture = context_.create("texture", name.substr(0, name.rfind('.')), "texture");
        setText(texture, "file", context_.paths.rebase(path));
        return &texture;
    }

    // An embedded image: an encoded file if its height is 0, otherwise pixels.
    Node* createEmbeddedTexture(const aiTexture& image) {
        Node& texture = context_.create("texture", viewOf(image.mFilename), "texture");
        if (image.mHeight == 0) {
            AttrData bytes = AttrData::buffer(DataType::Byte, image.mWidth);
            std::copy_n(reinterpret_cast<const u8*>(image.pcData), image.mWidth, bytes.elements<u8>().begin());
            set(texture, "encoded", std::move(bytes));
            return &texture;
        }
        const std::size_t count = std::size_t(image.mWidth) * image.mHeight;
        AttrData pixels = AttrData::buffer(DataType::Rgba8, count);
        for (std::size_t i = 0; i < count; ++i) {
            const aiTexel& pixel = image.pcData[i];
            std::ranges::copy(std::array{pixel.r, pixel.g, pixel.b, pixel.a},
                              pixels.elements<u8>().subspan(4 * i).begin());
        }
        set(texture, "width", AttrData::unsignedInteger(image.mWidth));
        set(texture, "height", AttrData::unsignedInteger(image.mHeight));
        set(texture, "pixels", std::move(pixels));
        return &texture;
    }

    void reportUnknownProperties() {
        for (const aiMaterialProperty* property : std::span(from_.mProperties, from_.mNumProperties)) {
            const std::string_view key = viewOf(property->mKey);
            const bool isTexture = key.starts_with("$tex.");
            const bool isKnown = isTexture ? std::ranges::find(textureMaps, property->mSemantic, &TextureMap::type) !=
                                                 std::end(textureMaps)
                                           : std::ranges::find(knownProperties, key) != std::end(knownProperties);
            if (isKnown || (isTexture && key != "$tex.file"))
                continue;
            context_.losses.add(
                isTexture ? "textures other than colour, normals, metalness, roughness, occlusion and emission"
                          : "material properties outside the metallic-roughness model",
                node_->name() + " " + String(key));
        }
    }

    ImportContext& context_;
    const aiMaterial& from_;
    Node* node_ = nullptr;
    bool isTranslucent_ = false;
};

} // namespace

bool isDefaultMaterial(const ImportContext& context, unsigned index) {
    const aiMaterial& from = *context.from.mMaterials[index];
    return viewOf(from.GetName()) == AI_DEFAULT_MATERIAL_NAME && from.GetTextureCount(aiTextureType_DIFFUSE) == 0;
}

Node* importMaterial(ImportContext& context, unsigned index) {
    if (index >= context.from.mNumMaterials || isDefaultMaterial(context, index))
        return nullptr;
    if (const auto known = context.materials.find(index); known != context.materials.end())
        return known->second;
    const aiMaterial& from = *context.from.mMaterials[index];
    const aiString name = from.GetName();
    return context.materials[index] = MaterialImport(context, from).read(viewOf(name));
}

} // namespace vrn::convert

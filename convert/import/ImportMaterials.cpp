#include "convert/import/ImportContext.h"
#include "convert/shared/Uri.h"

#include <algorithm>
#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <optional>

namespace vrn::convert {

namespace {

// The texture maps that are read, the more telling ones of the same input first.
struct Map {
    aiTextureType type;
    const char* object; // or null
    const char* input;
    const char* xform;
};
constexpr Map maps[] = {
    {aiTextureType_BASE_COLOR, nullptr, "baseColorMap", "baseColorXform"},
    {aiTextureType_DIFFUSE, nullptr, "baseColorMap", "baseColorXform"},
    {aiTextureType_NORMALS, nullptr, "normalMap", "normalXform"},
    {aiTextureType_METALNESS, nullptr, "metallicRoughnessMap", "metallicRoughnessXform"},
    {aiTextureType_DIFFUSE_ROUGHNESS, nullptr, "metallicRoughnessMap", "metallicRoughnessXform"},
    {aiTextureType_UNKNOWN, nullptr, "metallicRoughnessMap", "metallicRoughnessXform"},
    {aiTextureType_LIGHTMAP, nullptr, "occlusionMap", "occlusionXform"},
    {aiTextureType_EMISSIVE, "emission", "map", "emissionXform"},
};

// The properties that are read, or that say the same as one that is.
constexpr std::string_view readProperties[] = {"?mat.name",
                                               "$clr.base",
                                               "$clr.diffuse",
                                               "$mat.opacity",
                                               "$clr.emissive",
                                               "$mat.metallicFactor",
                                               "$mat.roughnessFactor",
                                               "$mat.twosided",
                                               "$mat.gltf.alphaMode",
                                               "$mat.gltf.alphaCutoff",
                                               "$mat.shadingm"};

class MaterialImport {
public:
    MaterialImport(ImportContext& import, const aiMaterial& from) : import_(import), from_(from) {}

    Node* read(std::string_view name) {
        node_ = &import_.create("material", name, "material");
        setBaseColor();
        setPortion("metallic", AI_MATKEY_METALLIC_FACTOR);
        setPortion("roughness", AI_MATKEY_ROUGHNESS_FACTOR);
        if (aiColor3D color; from_.Get(AI_MATKEY_COLOR_EMISSIVE, color) == AI_SUCCESS && !color.IsBlack())
            setMember(*node_->createInput("emission", AttrType::Object), "color",
                      numbersOf(AttrType::Vec3, std::array{plain(color.r), plain(color.g), plain(color.b)}));
        setAlpha();
        if (int isDoubleSided = 0; from_.Get(AI_MATKEY_TWOSIDED, isDoubleSided) == AI_SUCCESS)
            set(*node_, "doubleSided", AttrData::boolean(isDoubleSided != 0));
        for (const Map& map : maps)
            connectMap(map);
        noteOthers();
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
                   std::array{plain(color.r), plain(color.g), plain(color.b), plain(color.a)});
        isSeeThrough_ = color.a < 1;
    }

    void setPortion(const char* name, const char* key, unsigned type, unsigned index) {
        if (float portion = 0; from_.Get(key, type, index, portion) == AI_SUCCESS)
            set(*node_, name, AttrData::real(plain(portion)));
    }

    void setAlpha() {
        aiString mode;
        if (from_.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) != AI_SUCCESS)
            mode = isSeeThrough_ ? "blend" : "opaque";
        Input& alpha = *node_->createInput("alpha", AttrType::Object);
        setMember(alpha, "mode", AttrData::string(String(textOf(mode)).toLower().view()));
        if (float cutoff = 0; from_.Get(AI_MATKEY_GLTF_ALPHACUTOFF, cutoff) == AI_SUCCESS)
            setMember(alpha, "cutoff", AttrData::real(plain(cutoff)));
    }

    void connectMap(const Map& map) {
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
            import_.losses.add("further textures of one kind", *node_);
    }

    // The offset as it is from the upper left corner of the picture.
    void setXform(const Map& map) {
        aiUVTransform xform;
        if (from_.Get(AI_MATKEY_UVTRANSFORM(map.type, 0), xform) != AI_SUCCESS)
            return;
        if (xform.mRotation != 0)
            import_.losses.add("rotations of textures", *node_);
        const double scale[] = {static_cast<double>(xform.mScaling.x), static_cast<double>(xform.mScaling.y)};
        const double offset[] = {static_cast<double>(xform.mTranslation.x),
                                 1 - scale[1] - static_cast<double>(xform.mTranslation.y)};
        Input& object = *node_->createInput(map.xform, AttrType::Object);
        setMember(object, "offset", numbersOf(AttrType::Vec2, offset));
        setMember(object, "scale", numbersOf(AttrType::Vec2, scale));
    }

    [[nodiscard]] const char* wrap(aiTextureMapMode mode) {
        switch (mode) {
        case aiTextureMapMode_Wrap:
            return "repeat";
        case aiTextureMapMode_Mirror:
            return "mirror";
        case aiTextureMapMode_Clamp:
            return "clamp";
        default:
            import_.losses.add("textures that are there only once", *node_);
            return "clamp";
        }
    }

    Node& textureNode(aiTextureType type, const aiString& file) {
        int wrapU = aiTextureMapMode_Wrap;
        int wrapV = aiTextureMapMode_Wrap;
        unsigned filter = 0;
        (void)from_.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), wrapU);
        (void)from_.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), wrapV);
        (void)from_.Get(AI_MATKEY_GLTF_MAPPINGFILTER_MIN(type, 0), filter);
        const String about = String::format("%d %d %u ", wrapU, wrapV, filter) + String(textOf(file));
        Node*& known = import_.textures[std::string(about.view())];
        if (known)
            return *known;
        known = makeTexture(textOf(file));
        setText(*known, "wrapU", wrap(static_cast<aiTextureMapMode>(wrapU)));
        setText(*known, "wrapV", wrap(static_cast<aiTextureMapMode>(wrapV)));
        if (filter != 0)
            set(*known, "filter", AttrData::integer(filter));
        return *known;
    }

    Node* makeTexture(std::string_view file) {
        const aiTexture* embedded = import_.from.GetEmbeddedTexture(std::string(file).c_str());
        if (embedded)
            return makeEmbedded(*embedded);
        const std::string path = import_.isGltf ? pathOf(file) : std::string(file);
        const std::size_t folder = path.find_last_of("/\\");
        const std::string name = folder == std::string::npos ? path : path.substr(folder + 1);
        Node& texture = import_.create("texture", name.substr(0, name.rfind('.')), "texture");
        setText(texture, "file", import_.paths.of(path));
        return &texture;
    }

    // An image that stands in the file: as the file that it would be, or pixel by pixel.
    Node* makeEmbedded(const aiTexture& image) {
        Node& texture = import_.create("texture", textOf(image.mFilename), "texture");
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

    void noteOthers() {
        for (const aiMaterialProperty* property : std::span(from_.mProperties, from_.mNumProperties)) {
            const std::string_view key = textOf(property->mKey);
            const bool isTexture = key.starts_with("$tex.");
            const bool isRead = isTexture ? std::ranges::find(maps, property->mSemantic, &Map::type) != std::end(maps)
                                          : std::ranges::find(readProperties, key) != std::end(readProperties);
            const bool isDerived = import_.isGltf && key == "$mat.shininess"; // from the roughness
            if (isRead || isDerived || (isTexture && key != "$tex.file"))
                continue;
            import_.losses.add(isTexture
                                   ? "textures for other things than colour, normals, metal, roughness, occlusion "
                                     "and emission"
                                   : "properties of materials beyond those of metal and roughness",
                               node_->name() + " " + String(key));
        }
    }

    ImportContext& import_;
    const aiMaterial& from_;
    Node* node_ = nullptr;
    bool isSeeThrough_ = false;
};

} // namespace

bool isAdded(const ImportContext& import, unsigned material) {
    const aiMaterial& from = *import.from.mMaterials[material];
    if (import.isGltf)
        return !import.gltf.hasMaterial(material);
    return textOf(from.GetName()) == AI_DEFAULT_MATERIAL_NAME && from.GetTextureCount(aiTextureType_DIFFUSE) == 0;
}

Node* importMaterial(ImportContext& import, unsigned number) {
    if (number >= import.from.mNumMaterials || isAdded(import, number))
        return nullptr;
    if (const auto known = import.materials.find(number); known != import.materials.end())
        return known->second;
    const aiMaterial& from = *import.from.mMaterials[number];
    const aiString name = from.GetName();
    return import.materials[number] = MaterialImport(import, from).read(textOf(name));
}

} // namespace vrn::convert

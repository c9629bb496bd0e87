#include "convert/import/gltf/GltfTextureImport.h"

#include "convert/shared/Extension.h"
#include "convert/shared/ImageKind.h"
#include "convert/shared/NodeNames.h"
#include "convert/shared/Uri.h"

#include <filesystem>

namespace vrn::convert {

namespace {

// Extensions for images in formats that not every program reads; `source` then is an image for the others.
constexpr const char* imageExtensions[] = {"KHR_texture_basisu", "EXT_texture_webp"};

// The path of a file, or an address on the Web, which is kept as it is: escapes have a meaning there.
std::string pathOrAddress(std::string_view uri) {
    const bool isAddress = uri.starts_with("http://") || uri.starts_with("https://");
    return isAddress ? std::string(uri) : pathOf(uri);
}

class TextureImport {
public:
    TextureImport(GltfContext& context, const GltfValue& texture) : context_(context), texture_(texture) {}

    Node* read() {
        const std::vector<GltfValue> images = listImages();
        const std::string fallback = nodeNameFrom(images.empty() ? "" : nameOf(images[0]), "texture");
        node_ = &context_.create("texture", texture_, fallback.c_str());
        if (!images.empty()) {
            addImage(images[0], "");
            if (const std::string_view name = images[0]["name"].text();
                !name.empty() && name != texture_["name"].text())
                setText(*node_, "imageName", name);
            context_.keepExtras(*node_, "imageExtras", images[0]);
        }
        if (images.size() > 1) {
            addImage(images[1], "alternative.");
            if (const GltfValue name = images[1]["name"]; !name.text().empty())
                setAt(*node_, "alternative.name", AttrData::string(name.text()));
            context_.keepExtras(*node_, "alternative.extras", images[1]);
        }
        if (images.size() > 2)
            context_.losses.add("third images of textures", *node_);
        addSampler();
        return node_;
    }

private:
    // The image for all programs comes first.
    [[nodiscard]] std::vector<GltfValue> listImages() const {
        std::vector<GltfValue> images;
        const GltfValue list = context_.root["images"];
        const auto add = [&](const GltfValue& source) {
            if (source.exists())
                images.push_back(list[source.indexIn(list)]);
        };
        add(texture_["source"]);
        for (const char* extension : imageExtensions)
            if (const GltfValue extended = texture_.extension(extension); extended.exists())
                add(extended["source"]);
        return images;
    }

    [[nodiscard]] static std::string nameOf(const GltfValue& image) {
        const std::string_view name = image["name"].text();
        const std::string_view uri = image["uri"].text();
        return name.empty() && !uri.starts_with("data:") ? std::filesystem::path(pathOf(uri)).stem().string()
                                                         : std::string(name);
    }

    void addImage(const GltfValue& image, const std::string& prefix) {
        const std::string_view type = image["mimeType"].text(); // of embedded images, the bytes tell
        const GltfValue uri = image["uri"];
        if (image["bufferView"].exists())
            addBytes(prefix, context_.buffers.view(image["bufferView"]));
        else if (const std::optional<std::string> bytes = uri.exists() ? bytesOfDataUri(uri) : std::string())
            addBytes(prefix, *bytes);
        else
            addFile(prefix, pathOrAddress(uri.text()), type);
    }

    // The type of a file is kept if its name does not tell it.
    void addFile(const std::string& prefix, const std::string& path, std::string_view type) {
        setAt(*node_, prefix + "file", AttrData::string(context_.paths.rebase(path)));
        if (!type.empty() && type != mimeTypeOfExtension(extensionOf(path)))
            setAt(*node_, prefix + "mimeType", AttrData::string(type));
    }

    void addBytes(const std::string& prefix, std::string_view bytes) {
        AttrData encoded = AttrData::buffer(DataType::Byte, bytes.size());
        std::ranges::copy(bytes, encoded.elements<u8>().begin());
        setAt(*node_, prefix + "encoded", std::move(encoded));
    }

    void addSampler() {
        const GltfValue index = texture_["sampler"];
        if (!index.exists())
            return;
        const GltfValue samplers = context_.root["samplers"];
        const GltfValue sampler = samplers[index.indexIn(samplers)];
        setText(*node_, "wrapU", wrapMode(sampler["wrapS"]));
        setText(*node_, "wrapV", wrapMode(sampler["wrapT"]));
        for (const auto& [member, input] : {std::pair("minFilter", "filter"), std::pair("magFilter", "magFilter")})
            if (const GltfValue filter = sampler[member]; filter.exists())
                set(*node_, input, AttrData::integer(static_cast<i64>(filter.whole())));
        setTextIfAny("samplerName", sampler["name"]);
        context_.keepExtras(*node_, "samplerExtras", sampler);
    }

    [[nodiscard]] static const char* wrapMode(const GltfValue& mode) {
        switch (mode.whole(10497)) {
        case 33071:
            return "clamp";
        case 33648:
            return "mirror";
        case 10497:
            return "repeat";
        default:
            mode.refuse("it is no wrap mode");
        }
    }

    void setTextIfAny(const char* input, const GltfValue& text) {
        if (!text.text().empty())
            setText(*node_, input, text.text());
    }

    GltfContext& context_;
    const GltfValue& texture_;
    Node* node_ = nullptr;
};

} // namespace

void importTextures(GltfContext& context) {
    context.root["textures"].forEach(
        [&](const GltfValue& texture, u64) { context.textures.push_back(TextureImport(context, texture).read()); });
}

} // namespace vrn::convert

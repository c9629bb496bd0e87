#include "convert/scenes/ImageFiles.h"

#include "convert/shared/Errors.h"
#include "convert/shared/Extension.h"
#include "convert/shared/FileContent.h"
#include "convert/shared/ImageKind.h"
#include "convert/shared/NodeInputs.h"
#include "convert/shared/NodeNames.h"
#include "convert/shared/Readable.h"
#include "scene/Scene.h"
#include "scene/core/OutputFile.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace vrn::convert {

namespace {

std::span<const u8> bytesOf(std::string_view text) { return {reinterpret_cast<const u8*>(text.data()), text.size()}; }

// With its dot, for an image of a known format.
std::string extensionFor(std::string_view image) {
    const std::string_view mime = mimeTypeOf(bytesOf(image));
    return mime == "image/jpeg" ? ".jpg" : "." + std::string(mime.substr(mime.find('/') + 1));
}

// The name of the object of a prefix, `alternative.`.
String objectOf(const std::string& prefix) { return String(std::string_view(prefix).substr(0, prefix.size() - 1)); }

const Input* inputAt(const Node& node, const std::string& prefix, const char* name) {
    if (prefix.empty())
        return node.input(name);
    const Input* object = node.input(objectOf(prefix));
    return object ? object->input(name) : nullptr;
}

void remove(Node& texture, const std::string& prefix, const char* name) {
    if (prefix.empty())
        texture.removeInput(name);
    else
        texture.input(objectOf(prefix))->removeInput(name);
}

// The path in a texture, with slashes.
std::string fileOf(const Node& texture, const std::string& prefix) {
    const Input* input = inputAt(texture, prefix, "file");
    std::string file = input && input->type() == AttrType::String ? input->value().asString() : "";
    std::ranges::replace(file, '\\', '/');
    return file;
}

std::string_view encodedIn(const Node& texture, const std::string& prefix) {
    const Input* encoded = inputAt(texture, prefix, "encoded");
    if (!encoded)
        return {};
    const std::span<const u8> bytes = encoded->value().elements<u8>();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

ImageFiles::ImageFiles(ImageOptions options, const std::string& output, Losses& losses)
    : options_(std::move(options)),
      folder_(std::filesystem::absolute(output).parent_path().lexically_normal().string()), losses_(losses) {}

void ImageFiles::apply(Scene& scene) {
    for (Node& node : scene.nodes())
        if (node.type() == "texture" && !node.isDefinition())
            for (const char* prefix : {"", "alternative."})
                applyTo(node, prefix);
}

void ImageFiles::applyTo(Node& texture, const std::string& prefix) {
    const std::string_view encoded = encodedIn(texture, prefix);
    const std::string file = fileOf(texture, prefix);
    if (!encoded.empty()) {
        if (options_.extractTo.empty() || !mimeTypeOf(bytesOf(encoded)))
            return;
        const std::string name = nodeNameFrom(texture.name().view(), "image") + extensionFor(encoded);
        const std::string path = add(options_.extractTo, name, std::string(encoded));
        remove(texture, prefix, "encoded");
        return refer(texture, prefix, path);
    }
    if (file.empty() || (!options_.isEmbedded && options_.copyTo.empty()))
        return;
    const std::string from = (std::filesystem::path(folder_) / file).lexically_normal().string();
    if (const auto known = copies_.find(from); known != copies_.end())
        return refer(texture, prefix, known->second);
    std::string bytes = readImage(texture, from);
    if (bytes.empty())
        return;
    if (options_.isEmbedded)
        return embed(texture, prefix, bytes);
    std::string name = std::filesystem::path(file).filename().string();
    if (extensionOf(name).empty())
        name += extensionFor(bytes);
    const std::string path = add(options_.copyTo, name, std::move(bytes));
    copies_.emplace(from, path);
    refer(texture, prefix, path);
}

void ImageFiles::embed(Node& texture, const std::string& prefix, const std::string& bytes) {
    AttrData encoded = AttrData::buffer(DataType::Byte, bytes.size());
    std::ranges::copy(bytes, encoded.elements<u8>().begin());
    remove(texture, prefix, "encoded"); // it may have another type
    setAt(texture, prefix + "encoded", std::move(encoded));
    remove(texture, prefix, "file");
    remove(texture, prefix, "mimeType");
}

// Paths are relative to the output as far as they can be.
void ImageFiles::refer(Node& texture, const std::string& prefix, const std::string& path) const {
    const std::filesystem::path absolute = std::filesystem::absolute(path).lexically_normal();
    setAt(texture, prefix + "file", AttrData::string(absolute.lexically_proximate(folder_).generic_string()));
    if (!mimeTypeOfExtension(extensionOf(path)).empty())
        remove(texture, prefix, "mimeType");
}

// Only images are read: a scene could name any other file of the user.
std::string ImageFiles::readImage(const Node& texture, const std::string& file) {
    try {
        checkReadable(file);
        std::string bytes = readContent(file);
        if (mimeTypeOf(bytesOf(bytes)))
            return bytes;
        losses_.add("image files that are not PNG, JPEG, WebP or KTX 2 (left where they are)", texture);
    } catch (const FileError&) {
        losses_.add("image files that cannot be read", texture);
    }
    return {};
}

// The path of a new file; files of the same name get a number.
std::string ImageFiles::add(const std::string& folder, const std::string& name, std::string bytes) {
    const std::filesystem::path wanted(name);
    const std::string unique = names_.make(wanted.stem().string()) + wanted.extension().string();
    std::string path = (std::filesystem::path(folder) / unique).string();
    files_.push_back({path, std::move(bytes)});
    return path;
}

void ImageFiles::write() const {
    for (const NewFile& file : files_) {
        std::error_code error;
        const std::filesystem::path folder = std::filesystem::path(file.path).parent_path();
        std::filesystem::create_directories(folder, error);
        if (error)
            throw FileError(folder.string(), error.message());
        vor::OutputFile output(file.path);
        output.write(file.bytes);
        output.commit();
    }
}

} // namespace vrn::convert

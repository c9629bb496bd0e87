#include "convert/import/gltf/GltfBuffers.h"

#include "convert/shared/Errors.h"
#include "convert/shared/FileContent.h"
#include "convert/shared/Readable.h"
#include "convert/shared/Uri.h"

#include <filesystem>
#include <meshoptimizer.h>

namespace vrn::convert {

namespace {

constexpr const char* meshopt = "EXT_meshopt_compression";

std::string decodeBase64(std::string_view text, const GltfValue& uri) {
    static constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    u32 bits = 0;
    int count = 0;
    while (!text.empty() && text.back() == '=')
        text.remove_suffix(1);
    for (const char c : text) {
        const std::size_t digit = digits.find(c);
        if (digit == std::string_view::npos)
            uri.refuse("it is not valid base64");
        bits = bits << 6 | static_cast<u32>(digit);
        if ((count += 6) >= 8)
            bytes += static_cast<char>(bits >> (count -= 8) & 0xFF);
    }
    return bytes;
}

enum class Filter { None, Octahedral, Quaternion, Exponential };

Filter filterOf(const GltfValue& compression) {
    const std::string_view name = compression["filter"].text("NONE");
    if (name == "OCTAHEDRAL")
        return Filter::Octahedral;
    if (name == "QUATERNION")
        return Filter::Quaternion;
    if (name == "EXPONENTIAL")
        return Filter::Exponential;
    if (name != "NONE")
        compression["filter"].refuse("it is no filter of this extension");
    return Filter::None;
}

// The library asserts what is refused here.
void applyFilter(Filter filter, std::string& elements, u64 count, u64 stride, const GltfValue& compression) {
    switch (filter) {
    case Filter::None:
        return;
    case Filter::Octahedral:
        if (stride != 4 && stride != 8)
            break;
        return meshopt_decodeFilterOct(elements.data(), count, stride);
    case Filter::Quaternion:
        if (stride != 8)
            break;
        return meshopt_decodeFilterQuat(elements.data(), count, stride);
    case Filter::Exponential:
        return meshopt_decodeFilterExp(elements.data(), count, stride);
    }
    compression["filter"].refuse("it does not fit the stride of " + std::to_string(stride));
}

} // namespace

GltfBuffers::GltfBuffers(const GltfJson& json, std::string_view binary) : json_(json), binary_(binary) {}

std::string_view GltfBuffers::view(const GltfValue& index) {
    const GltfValue views = json_.root()["bufferViews"];
    const u64 number = index.indexIn(views);
    const GltfValue view = views[number];
    const GltfValue compression = view.extension(meshopt);
    if (!compression.exists())
        return range(view);
    const auto [found, isNew] = decompressed_.try_emplace(number);
    if (isNew)
        found->second = decompress(compression);
    return found->second;
}

std::optional<u64> GltfBuffers::strideOf(const GltfValue& index) const {
    const GltfValue views = json_.root()["bufferViews"];
    const GltfValue view = views[index.indexIn(views)];
    const GltfValue compression = view.extension(meshopt);
    const GltfValue stride = compression.exists() ? compression["byteStride"] : view["byteStride"];
    if (!stride.exists() || (compression.exists() && compression["mode"].text() != "ATTRIBUTES"))
        return {};
    if (stride.whole() == 0 || stride.whole() > 256)
        stride.refuse("it is not between 1 and 256");
    return stride.whole();
}

// The bytes that the buffer, offset and length of an object select.
std::string_view GltfBuffers::range(const GltfValue& view) {
    const std::string_view bytes = buffer(view["buffer"].required());
    const u64 offset = view["byteOffset"].whole();
    const u64 length = view["byteLength"].required().whole();
    if (offset > bytes.size() || length > bytes.size() - offset)
        view["byteLength"].refuse("the view ends at byte " + std::to_string(offset + length) + " of a buffer of " +
                                  std::to_string(bytes.size()) + " bytes");
    return bytes.substr(offset, length);
}

std::string_view GltfBuffers::buffer(const GltfValue& index) {
    const GltfValue list = json_.root()["buffers"];
    const u64 number = index.indexIn(list);
    const GltfValue buffer = list[number];
    const auto [found, isNew] = buffers_.try_emplace(number);
    const bool isBinaryChunk = number == 0 && !buffer["uri"].exists() && binary_.data();
    if (isNew && !isBinaryChunk)
        found->second = load(buffer);
    const std::string_view bytes = isBinaryChunk ? binary_ : std::string_view(found->second);
    const u64 length = buffer["byteLength"].required().whole();
    if (length > bytes.size())
        buffer["byteLength"].refuse("the buffer has only " + std::to_string(bytes.size()) + " bytes");
    return bytes.substr(0, length);
}

std::string GltfBuffers::load(const GltfValue& buffer) const {
    const GltfValue uri = buffer["uri"];
    if (!uri.exists())
        buffer.refuse("it has neither a uri nor the binary chunk of a GLB");
    if (std::optional<std::string> bytes = bytesOfDataUri(uri))
        return std::move(*bytes);
    try {
        const std::string file = fileOf(uri);
        checkReadable(file);
        return readContent(file);
    } catch (const FileError& error) {
        uri.refuse(error.path() + " cannot be read: " + error.what());
    }
}

std::string GltfBuffers::decompress(const GltfValue& compression) {
    const std::string_view from = range(compression);
    const auto* bytes = reinterpret_cast<const unsigned char*>(from.data());
    const u64 count = compression["count"].required().whole();
    const u64 stride = compression["byteStride"].required().whole(0, 257);
    const std::string_view mode = compression["mode"].required().text();
    // The best that these modes can do: two bits for 16 equal bytes, one byte for a triangle or an index. Without this
    // bound, a short file could ask for any amount of memory.
    const u64 most = from.size() * (mode == "ATTRIBUTES" ? 64 : 3 * stride);
    if (stride == 0 || count * stride > most)
        compression["count"].refuse("it is too large for the compressed bytes");
    std::string elements(count * stride, '\0');
    int status = -1;
    if (mode == "ATTRIBUTES") {
        if (stride % 4 != 0)
            compression["byteStride"].refuse("it is not a multiple of 4");
        status = meshopt_decodeVertexBuffer(elements.data(), count, stride, bytes, from.size());
    } else {
        if (stride != 2 && stride != 4)
            compression["byteStride"].refuse("it is neither 2 nor 4");
        if (mode == "TRIANGLES" && count % 3 == 0)
            status = meshopt_decodeIndexBuffer(elements.data(), count, stride, bytes, from.size());
        else if (mode == "INDICES")
            status = meshopt_decodeIndexSequence(elements.data(), count, stride, bytes, from.size());
        else
            compression["mode"].refuse("it is no mode of this extension that fits the count");
    }
    if (status != 0)
        compression.refuse("its bytes are not valid compressed data");
    applyFilter(filterOf(compression), elements, count, stride, compression);
    return elements;
}

std::optional<std::string> bytesOfDataUri(const GltfValue& uri) {
    const std::string_view text = uri.text();
    if (!text.starts_with("data:"))
        return {};
    constexpr std::string_view marker = ";base64,";
    const std::size_t start = text.find(marker);
    if (start == std::string_view::npos)
        uri.refuse("it is a data URI without base64");
    return decodeBase64(text.substr(start + marker.size()), uri);
}

std::string fileOf(const GltfValue& uri) {
    const std::string path = pathOf(uri.text());
    if (!isRelative(path))
        uri.refuse("it is not a relative path");
    return (std::filesystem::path(uri.file()).parent_path() / path).string();
}

} // namespace vrn::convert

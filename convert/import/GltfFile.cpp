#include "convert/import/GltfFile.h"

#include "convert/import/GltfJson.h"
#include "convert/import/GltfSafety.h"
#include "convert/import/GltfUnsharing.h"
#include "convert/import/GltfUnsupported.h"
#include "convert/shared/LittleEndian.h"
#include "convert/shared/Uri.h"
#include "scene/core/File.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace vrn::convert {

using vor::velmo_sdk::impl::JsonAllocator;

namespace {

// Up to `maxBytes` of a regular file; nothing from other kinds of files.
std::string readBytes(const std::filesystem::path& path, u64 maxBytes) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return {};
    vor::File file = vor::File::open(std::string_view(path.string()));
    std::string bytes;
    while (bytes.size() < maxBytes) {
        const std::string_view block = file.readBlock();
        if (block.empty())
            break;
        bytes += block;
    }
    bytes.resize(std::min<u64>(bytes.size(), maxBytes));
    return bytes;
}

std::string decodeBase64(std::string_view text) {
    static constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    u32 bits = 0;
    int count = 0;
    for (const char c : text) {
        const std::size_t digit = digits.find(c);
        if (digit == std::string_view::npos)
            break;
        bits = bits << 6 | static_cast<u32>(digit);
        if ((count += 6) >= 8)
            bytes += static_cast<char>(bits >> (count -= 8) & 0xFF);
    }
    return bytes;
}

} // namespace

struct GltfFile::Contents {
    GltfDocument json;
    std::string file;
    std::string_view text;   // the JSON
    std::string_view binary; // the binary chunk of a .glb
    bool isTooDeep = false;
    bool isParsed = false;
    std::vector<std::string> losses;
    std::vector<std::string> names; // of the nodes in the file
    std::vector<const GltfValue*> primitives;
    std::vector<std::string> buffers;

    explicit Contents(const std::string& path) : file(readBytes(path, std::numeric_limits<u64>::max())), text(file) {
        if (text.starts_with("glTF") && text.size() >= 20) {
            const u64 length = littleEndian32At(text, 12);
            const u64 next = 20 + length;
            if (next + 8 <= text.size())
                binary = text.substr(next + 8, littleEndian32At(text, next));
            text = text.substr(20, length);
        }
        isTooDeep = isNestedTooDeeply(text);
        json.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
        isParsed = !isTooDeep && !json.HasParseError() && json.IsObject();
        if (!isParsed)
            return;
        losses = unsupportedFeatures(json);
        for (u64 i = 0; const GltfValue* node = itemOf<const GltfValue>(json, "nodes", i); ++i)
            names.emplace_back(textIn(*node, "name"));
        std::ranges::move(unshare(json), std::back_inserter(losses));
        listPrimitives();
        const std::filesystem::path folder = std::filesystem::path(path).parent_path();
        for (u64 i = 0; GltfValue* buffer = itemOf<GltfValue>(json, "buffers", i); ++i)
            buffers.push_back(readBuffer(*buffer, folder));
    }

    void listPrimitives() {
        for (u64 i = 0; const GltfValue* mesh = itemOf<const GltfValue>(json, "meshes", i); ++i)
            for (u64 k = 0; const GltfValue* primitive = itemOf(*mesh, "primitives", k); ++k)
                primitives.push_back(primitive);
    }

    std::string readBuffer(GltfValue& buffer, const std::filesystem::path& folder) {
        if (!buffer.HasMember("uri"))
            return std::string(binary);
        const std::string uri(textIn(buffer, "uri"));
        if (const std::size_t data = uri.find(";base64,"); uri.starts_with("data:") && data != std::string::npos)
            return decodeBase64(std::string_view(uri).substr(data + 8));
        const std::string name = pathOf(uri);
        std::error_code error;
        if (!std::filesystem::exists(folder / name, error))
            return {};
        buffer["uri"].SetString(name.c_str(), json.GetAllocator()); // Assimp treats it as a path
        return readBytes(folder / name, numberIn(buffer, "byteLength").value_or(0));
    }

    // The index of a node in the prepared file, which is its name there.
    [[nodiscard]] std::optional<u64> nodeIndex(std::string_view name) const {
        u64 index = 0;
        if (name.empty() || name.size() > 9 || !std::ranges::all_of(name, String::isDigit))
            return {};
        for (const char digit : name)
            index = 10 * index + static_cast<u64>(digit - '0');
        return index < names.size() ? std::optional(index) : std::nullopt;
    }

    // The second components of an accessor of `count` float pairs; empty if it is not one.
    [[nodiscard]] std::vector<float> secondComponents(const GltfValue& accessor, u64 count) const {
        const auto type = accessor.FindMember("type");
        const bool isPairs = type != accessor.MemberEnd() && type->value.IsString() &&
                             std::string_view(type->value.GetString()) == "VEC2" &&
                             numberIn(accessor, "componentType") == 5126 && !accessor.HasMember("sparse");
        const GltfValue* view = itemOf<const GltfValue>(json, "bufferViews", numberIn(accessor, "bufferView"));
        const u64 buffer = view ? numberIn(*view, "buffer").value_or(0) : 0;
        if (!isPairs || !view || buffer >= buffers.size() || numberIn(accessor, "count") != count)
            return {};
        const std::string& bytes = buffers[buffer];
        const u64 stride = numberIn(*view, "byteStride").value_or(8);
        const u64 offsets[] = {numberIn(*view, "byteOffset").value_or(0), numberIn(accessor, "byteOffset").value_or(0)};
        const u64 size = bytes.size();
        if (offsets[0] > size || offsets[1] > size - offsets[0] || stride < 8 || stride > 252 ||
            count > (size - offsets[0] - offsets[1] + stride - 8) / stride)
            return {};
        std::vector<float> values(count);
        for (u64 i = 0; i < count; ++i)
            std::memcpy(&values[i], bytes.data() + offsets[0] + offsets[1] + i * stride + 4, 4);
        return values;
    }
};

GltfFile::GltfFile() = default;
GltfFile::GltfFile(const std::string& path) : contents_(std::make_unique<Contents>(path)) {}
GltfFile::~GltfFile() = default;

std::string GltfFile::rejection() const {
    if (!contents_)
        return "";
    return contents_->isTooDeep ? "its JSON is nested more than 1000 levels deep" : hierarchyProblem(contents_->json);
}

std::string GltfFile::preparedBytes() const {
    if (!contents_ || !contents_->isParsed)
        return contents_ ? contents_->file : "";
    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, JsonAllocator>;
    using Writer = rapidjson::Writer<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator>;
    Buffer buffer;
    Writer writer(buffer);
    contents_->json.Accept(writer);
    std::string text(buffer.GetString(), buffer.GetSize());
    if (contents_->text.size() == contents_->file.size())
        return text;
    text.append((4 - text.size() % 4) % 4, ' ');
    const std::string_view file = contents_->file;
    const std::string_view rest = file.substr(20 + contents_->text.size()); // further chunks
    return std::string(file.substr(0, 8)) + littleEndian32(20 + text.size() + rest.size()) +
           littleEndian32(text.size()) + std::string(file.substr(16, 4)) + text + std::string(rest);
}

std::vector<std::string> GltfFile::losses() const { return contents_ ? contents_->losses : std::vector<std::string>(); }

std::string GltfFile::originalName(std::string_view name) const {
    const std::optional<u64> node = contents_ ? contents_->nodeIndex(name) : std::nullopt;
    return node ? contents_->names[*node] : std::string(name);
}

bool GltfFile::hasFarPlane(std::string_view name) const {
    const std::optional<u64> node = contents_ ? contents_->nodeIndex(name) : std::nullopt;
    if (!node)
        return true;
    const GltfValue& json = contents_->json;
    const GltfValue* camera = itemOf(json, "cameras", numberIn(*itemOf(json, "nodes", node), "camera"));
    const GltfValue* perspective = camera ? memberOf(camera, "perspective") : nullptr;
    return !perspective || perspective->HasMember("zfar");
}

bool GltfFile::hasMaterial(u32 index) const {
    return contents_ && itemOf<const GltfValue>(contents_->json, "materials", index) != nullptr;
}

bool GltfFile::hasNonLinearKeys(u32 animation) const {
    const GltfValue* object = contents_ ? itemOf<const GltfValue>(contents_->json, "animations", animation) : nullptr;
    for (u64 i = 0; const GltfValue* sampler = object ? itemOf(*object, "samplers", i) : nullptr; ++i) {
        const auto interpolation = sampler->FindMember("interpolation");
        if (interpolation != sampler->MemberEnd() && interpolation->value.IsString() &&
            std::string_view(interpolation->value.GetString()) != "LINEAR")
            return true;
    }
    return false;
}

std::vector<float> GltfFile::textureV(u32 primitive, u32 set, u64 vertices) const {
    if (!contents_ || primitive >= contents_->primitives.size())
        return {};
    const GltfValue& object = *contents_->primitives[primitive];
    const auto attributes = object.FindMember("attributes");
    if (attributes == object.MemberEnd() || !attributes->value.IsObject())
        return {};
    const String name = String("TEXCOORD_") + String(u64(set));
    const GltfValue* accessor =
        itemOf<const GltfValue>(contents_->json, "accessors", numberIn(attributes->value, name.buf()));
    return accessor ? contents_->secondComponents(*accessor, vertices) : std::vector<float>();
}

} // namespace vrn::convert

#include "convert/import/GltfFile.h"

#include "convert/import/GltfJson.h"
#include "convert/import/GltfNotes.h"
#include "convert/import/GltfUnsharing.h"
#include "convert/shared/Uri.h"
#include "scene/core/File.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <span>

namespace vrn::convert {

using namespace vor;

namespace {

// At most so many bytes of a regular file; of another one none.
std::string readBytes(const std::filesystem::path& path, u64 most) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return {};
    File file = File::open(std::string_view(path.string()));
    std::string bytes;
    while (bytes.size() < most) {
        const std::string_view block = file.readBlock();
        if (block.empty())
            break;
        bytes += block;
    }
    bytes.resize(std::min<u64>(bytes.size(), most));
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

u32 wordAt(std::string_view bytes, std::size_t at) {
    u32 word = 0;
    std::memcpy(&word, bytes.data() + at, 4);
    return word;
}

std::string word(u64 number) {
    const auto bytes = static_cast<u32>(number);
    return {reinterpret_cast<const char*>(&bytes), 4};
}

constexpr std::size_t mostDepth = 1000;

// Nodes go down from those that are no children, one level after the other.
std::string dangerOf(const std::vector<std::vector<u64>>& children, const std::vector<bool>& isChild) {
    std::vector<u64> level;
    for (u64 i = 0; i < children.size(); ++i)
        if (!isChild[i])
            level.push_back(i);
    std::size_t seen = 0;
    for (std::size_t depth = 0; !level.empty(); ++depth) {
        if (depth > mostDepth)
            return "its nodes are nested more than 1000 deep";
        seen += level.size();
        std::vector<u64> next;
        for (const u64 node : level)
            next.insert(next.end(), children[node].begin(), children[node].end());
        level = std::move(next);
    }
    return seen == children.size() ? "" : "its nodes are their own children";
}

// Whether brackets are nested deeper than anybody needs.
bool isNestedDeeply(std::string_view json) {
    std::size_t depth = 0;
    bool isInText = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (c == '"')
            isInText = !isInText;
        else if (isInText)
            i += c == '\\' ? 1 : 0;
        else if ((c == '[' || c == '{') && ++depth > mostDepth)
            return true;
        else if ((c == ']' || c == '}') && depth > 0)
            --depth;
    }
    return false;
}

} // namespace

struct GltfFile::Contents {
    GltfDocument json;
    std::string file;
    std::string_view text;   // of the JSON in the file
    std::string_view binary; // the numbers in the file, if it has any itself
    bool isDeep = false;
    bool isRead = false;
    std::vector<std::string> losses;
    std::vector<std::string> names; // of the nodes
    std::vector<const GltfValue*> primitives;
    std::vector<std::string> buffers;

    explicit Contents(const std::string& path) : file(readBytes(path, std::numeric_limits<u64>::max())), text(file) {
        if (text.starts_with("glTF") && text.size() >= 20) {
            const u64 length = wordAt(text, 12);
            const u64 next = 20 + length;
            if (next + 8 <= text.size())
                binary = text.substr(next + 8, wordAt(text, next));
            text = text.substr(20, length);
        }
        isDeep = isNestedDeeply(text);
        json.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
        isRead = !isDeep && !json.HasParseError() && json.IsObject();
        if (!isRead)
            return;
        losses = lostParts(json);
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
        buffer["uri"].SetString(name.c_str(), json.GetAllocator()); // Assimp takes it for the name of a file
        return readBytes(folder / name, numberIn(buffer, "byteLength").value_or(0));
    }

    // The node whose number a text is, or none.
    [[nodiscard]] std::optional<u64> nodeOf(std::string_view name) const {
        u64 number = 0;
        if (name.empty() || name.size() > 9 || !std::ranges::all_of(name, String::isDigit))
            return {};
        for (const char digit : name)
            number = 10 * number + static_cast<u64>(digit - '0');
        return number < names.size() ? std::optional(number) : std::nullopt;
    }

    // Pairs of floats, packed or not.
    [[nodiscard]] std::vector<float> seconds(const GltfValue& accessor, u64 count) const {
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
        const u64 room = bytes.size();
        if (offsets[0] > room || offsets[1] > room - offsets[0] || stride < 8 || stride > 252 ||
            count > (room - offsets[0] - offsets[1] + stride - 8) / stride)
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

// The children of the nodes, each of which must be the child of one at most.
std::string GltfFile::danger() const {
    if (!contents_)
        return "";
    if (contents_->isDeep)
        return "its lists are nested more than 1000 deep";
    const GltfValue& json = contents_->json;
    const GltfValue* nodes = memberOf(&json, "nodes");
    if (!nodes || !nodes->IsArray())
        return "";
    std::vector<std::vector<u64>> children(nodes->Size());
    std::vector<bool> isChild(children.size());
    for (u64 i = 0; i < children.size(); ++i) {
        const GltfValue* node = itemOf(json, "nodes", i);
        const auto list = node ? node->FindMember("children") : GltfValue::ConstMemberIterator();
        if (!node || list == node->MemberEnd() || !list->value.IsArray())
            continue;
        for (const GltfValue& child : list->value.GetArray()) {
            if (!child.IsUint64() || child.GetUint64() >= children.size() || isChild[child.GetUint64()])
                return "its nodes have children that are not there or have another parent";
            isChild[child.GetUint64()] = true;
            children[i].push_back(child.GetUint64());
        }
    }
    return dangerOf(children, isChild);
}

std::string GltfFile::bytes() const {
    if (!contents_ || !contents_->isRead)
        return contents_ ? contents_->file : "";
    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, velmo_sdk::impl::JsonAllocator>;
    using Writer = rapidjson::Writer<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>, velmo_sdk::impl::JsonAllocator>;
    Buffer buffer;
    Writer writer(buffer);
    contents_->json.Accept(writer);
    std::string text(buffer.GetString(), buffer.GetSize());
    if (contents_->text.size() == contents_->file.size())
        return text;
    text.append((4 - text.size() % 4) % 4, ' ');
    const std::string_view old = contents_->file;
    const std::string_view behind = old.substr(20 + contents_->text.size());
    return std::string(old.substr(0, 8)) + word(20 + text.size() + behind.size()) + word(text.size()) +
           std::string(old.substr(16, 4)) + text + std::string(behind);
}

std::vector<std::string> GltfFile::losses() const { return contents_ ? contents_->losses : std::vector<std::string>(); }

std::string GltfFile::nodeName(std::string_view name) const {
    const std::optional<u64> node = contents_ ? contents_->nodeOf(name) : std::nullopt;
    return node ? contents_->names[*node] : std::string(name);
}

bool GltfFile::hasFarPlane(std::string_view name) const {
    const std::optional<u64> node = contents_ ? contents_->nodeOf(name) : std::nullopt;
    if (!node)
        return true;
    const GltfValue& json = contents_->json;
    const GltfValue* camera = itemOf(json, "cameras", numberIn(*itemOf(json, "nodes", node), "camera"));
    const GltfValue* perspective = camera ? memberOf(camera, "perspective") : nullptr;
    return !perspective || perspective->HasMember("zfar");
}

bool GltfFile::hasMaterial(u32 number) const {
    return contents_ && itemOf<const GltfValue>(contents_->json, "materials", number) != nullptr;
}

bool GltfFile::hasCurves(u32 animation) const {
    const GltfValue* of = contents_ ? itemOf<const GltfValue>(contents_->json, "animations", animation) : nullptr;
    for (u64 i = 0; const GltfValue* sampler = of ? itemOf(*of, "samplers", i) : nullptr; ++i) {
        const auto way = sampler->FindMember("interpolation");
        if (way != sampler->MemberEnd() && way->value.IsString() &&
            std::string_view(way->value.GetString()) != "LINEAR")
            return true;
    }
    return false;
}

std::vector<float> GltfFile::verticals(u32 primitive, u32 set, u64 vertices) const {
    if (!contents_ || primitive >= contents_->primitives.size())
        return {};
    const GltfValue& of = *contents_->primitives[primitive];
    const auto attributes = of.FindMember("attributes");
    if (attributes == of.MemberEnd() || !attributes->value.IsObject())
        return {};
    const String name = String("TEXCOORD_") + String(u64(set));
    const GltfValue* accessor =
        itemOf<const GltfValue>(contents_->json, "accessors", numberIn(attributes->value, name.buf()));
    return accessor ? contents_->seconds(*accessor, vertices) : std::vector<float>();
}

} // namespace vrn::convert

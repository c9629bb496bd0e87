#include "scene/RapidJson.h"

#include "convert/GltfFile.h"
#include "convert/Uri.h"
#include "scene/core/File.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <optional>
#include <rapidjson/document.h>
#include <span>

namespace vrn::convert {

using namespace vor;

namespace {

using Allocator = rapidjson::MemoryPoolAllocator<velmo_sdk::impl::JsonAllocator>;
using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Allocator, velmo_sdk::impl::JsonAllocator>;
using Value = Document::ValueType;

std::string readAll(const std::string& path) {
    File file = File::open(std::string_view(path));
    std::string bytes;
    for (char c; file.read(c);) {
        bytes += c;
        bytes += file.unread();
        file.skip(file.unread().size());
    }
    return bytes;
}

std::optional<u64> numberIn(const Value& object, const char* name) {
    const auto member = object.FindMember(name);
    if (member == object.MemberEnd() || !member->value.IsUint64())
        return {};
    return member->value.GetUint64();
}

// The object at `index` of the list `name`, or null.
const Value* itemOf(const Value& object, const char* name, std::optional<u64> index) {
    const auto member = object.FindMember(name);
    if (member == object.MemberEnd() || !member->value.IsArray() || !index || *index >= member->value.Size())
        return nullptr;
    const Value& item = member->value[static_cast<rapidjson::SizeType>(*index)];
    return item.IsObject() ? &item : nullptr;
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
    Document json;
    bool isDeep = false;
    std::vector<const Value*> primitives;
    std::vector<std::string> buffers;

    explicit Contents(const std::string& path) {
        const std::string file = readAll(path);
        std::string_view binary;
        std::string_view text = file;
        if (text.starts_with("glTF") && text.size() >= 20) {
            const u64 length = wordAt(text, 12);
            const u64 next = 20 + length;
            if (next + 8 <= text.size())
                binary = text.substr(next + 8, wordAt(text, next));
            text = text.substr(20, length);
        }
        isDeep = isNestedDeeply(text);
        json.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
        if (json.HasParseError() || !json.IsObject())
            return;
        listPrimitives();
        for (u64 i = 0; const Value* buffer = itemOf(json, "buffers", i); ++i)
            buffers.push_back(readBuffer(*buffer, binary, path));
    }

    void listPrimitives() {
        for (u64 i = 0; const Value* mesh = itemOf(json, "meshes", i); ++i)
            for (u64 k = 0; const Value* primitive = itemOf(*mesh, "primitives", k); ++k)
                primitives.push_back(primitive);
    }

    static std::string readBuffer(const Value& buffer, std::string_view binary, const std::string& path) {
        const auto uri = buffer.FindMember("uri");
        if (uri == buffer.MemberEnd())
            return std::string(binary);
        if (!uri->value.IsString())
            return {};
        const std::string_view name(uri->value.GetString(), uri->value.GetStringLength());
        if (const std::size_t data = name.find(";base64,"); name.starts_with("data:") && data != std::string_view::npos)
            return decodeBase64(name.substr(data + 8));
        return readAll((std::filesystem::path(path).parent_path() / pathOf(name)).string());
    }

    // Pairs of floats, packed or not.
    [[nodiscard]] std::vector<float> seconds(const Value& accessor, u64 count) const {
        const auto type = accessor.FindMember("type");
        const bool isPairs = type != accessor.MemberEnd() && type->value.IsString() &&
                             std::string_view(type->value.GetString()) == "VEC2" &&
                             numberIn(accessor, "componentType") == 5126 && !accessor.HasMember("sparse");
        const Value* view = itemOf(json, "bufferViews", numberIn(accessor, "bufferView"));
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
    const Document& json = contents_->json;
    if (!json.IsObject())
        return "";
    const auto member = json.FindMember("nodes");
    if (member == json.MemberEnd() || !member->value.IsArray())
        return "";
    std::vector<std::vector<u64>> children(member->value.Size());
    std::vector<bool> isChild(children.size());
    for (u64 i = 0; i < children.size(); ++i) {
        const Value* node = itemOf(json, "nodes", i);
        const auto list = node ? node->FindMember("children") : Value::ConstMemberIterator();
        if (!node || list == node->MemberEnd() || !list->value.IsArray())
            continue;
        for (const Value& child : list->value.GetArray()) {
            if (!child.IsUint64() || child.GetUint64() >= children.size() || isChild[child.GetUint64()])
                return "its nodes have children that are not there or have another parent";
            isChild[child.GetUint64()] = true;
            children[i].push_back(child.GetUint64());
        }
    }
    return dangerOf(children, isChild);
}

bool GltfFile::hasMaterial(u32 number) const {
    return contents_ && itemOf(contents_->json, "materials", number) != nullptr;
}

bool GltfFile::hasCurves(u32 animation) const {
    const Value* of = contents_ ? itemOf(contents_->json, "animations", animation) : nullptr;
    for (u64 i = 0; const Value* sampler = of ? itemOf(*of, "samplers", i) : nullptr; ++i) {
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
    const Value& of = *contents_->primitives[primitive];
    const auto attributes = of.FindMember("attributes");
    if (attributes == of.MemberEnd() || !attributes->value.IsObject())
        return {};
    const String name = String("TEXCOORD_") + String(u64(set));
    const Value* accessor = itemOf(contents_->json, "accessors", numberIn(attributes->value, name.buf()));
    return accessor ? contents_->seconds(*accessor, vertices) : std::vector<float>();
}

} // namespace vrn::convert

#include "convert/export/GltfObjects.h"

#include "convert/model/Inputs.h"
#include "convert/shared/GltfNesting.h"

#include <algorithm>
#include <rapidjson/reader.h>

namespace vrn::convert {

namespace {

// Accepts all JSON and measures how deeply it is nested.
class DepthMeter : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, DepthMeter> {
public:
    bool StartObject() { return open(); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool StartArray() { return open(); }
    bool EndArray(rapidjson::SizeType) { return close(); }
    [[nodiscard]] std::size_t deepest() const noexcept { return deepest_; }

private:
    bool open() {
        deepest_ = std::max(deepest_, ++depth_);
        return true;
    }
    bool close() {
        --depth_;
        return true;
    }

    std::size_t depth_ = 0;
    std::size_t deepest_ = 0;
};

// Null for JSON that can be written.
const char* problemOf(const std::string& text) {
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, vor::velmo_sdk::impl::JsonAllocator> reader;
    rapidjson::StringStream stream(text.c_str());
    DepthMeter meter;
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    if (reader.Parse<flags>(stream, meter).IsError())
        return "extras that are not JSON";
    return meter.deepest() > maxExtrasDepth ? "extras nested more than 995 levels deep" : nullptr;
}

} // namespace

std::string extrasOf(const Node& node, const char* path, Losses& losses) {
    const InputReader reader(node, losses);
    std::string text = reader.text(path);
    const char* problem = text.empty() ? nullptr : problemOf(text);
    if (!problem)
        return text;
    losses.add(problem, *reader.find(path));
    return {};
}

void writeName(JsonText& json, const Node& node) { json.key("name").text(displayName(node)); }

void writeExtras(JsonText& json, const Node& node, const char* path, Losses& losses) {
    if (const std::string extras = extrasOf(node, path, losses); !extras.empty())
        json.key("extras").raw(extras);
}

void writeMeshExtras(JsonText& json, const Geometry& geometry, Losses& losses) {
    std::string extras = extrasOf(*geometry.source, "extras", losses);
    const bool hasNames =
        std::ranges::any_of(geometry.targets, [](const MorphTarget& target) { return !target.name.empty(); });
    if (!hasNames) {
        if (!extras.empty())
            json.key("extras").raw(extras);
        return;
    }
    const std::size_t end = extras.find_last_not_of(" \t\r\n");
    const bool isObject = extras.empty() || extras[extras.find_first_not_of(" \t\r\n")] == '{';
    if (!isObject)
        losses.add("extras of meshes with morph targets that are not objects", *geometry.source);
    JsonText names;
    names.array([&] {
        for (const MorphTarget& target : geometry.targets)
            names.text(target.name);
    });
    std::string members = extras.empty() || !isObject ? "{" : extras.substr(0, end);
    if (members.find('"') != std::string::npos)
        members += ',';
    json.key("extras").raw(members + "\"targetNames\":" + std::string(names.view()) + "}");
}

} // namespace vrn::convert

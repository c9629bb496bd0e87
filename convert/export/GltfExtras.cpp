#include "convert/export/GltfExtras.h"

#include "convert/model/Inputs.h"

#include <algorithm>
#include <rapidjson/reader.h>

namespace vrn::convert {

namespace {

bool isJson(const std::string& text) {
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, vor::velmo_sdk::impl::JsonAllocator> reader;
    rapidjson::StringStream stream(text.c_str());
    rapidjson::BaseReaderHandler<> ignore;
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    return !reader.Parse<flags>(stream, ignore).IsError();
}

} // namespace

std::string extrasOf(const Node& node, const char* path, Losses& losses) {
    const InputReader reader(node, losses);
    std::string text = reader.text(path);
    if (text.empty() || isJson(text))
        return text;
    losses.add("extras that are not JSON", *reader.find(path));
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

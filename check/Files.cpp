#include "check/Files.h"

#include "check/Texts.h"

#include <algorithm>
#include <filesystem>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

// A scheme has at least two letters; a single one is a drive.
static bool isUri(std::string_view name) {
    const std::size_t colon = name.find(':');
    const std::string_view scheme = name.substr(0, colon);
    return colon != std::string_view::npos && colon >= 2 &&
           std::ranges::all_of(scheme, [](char c) { return String::isLetter(c) || String::isDigit(c); });
}

// A file whose folder cannot be searched may exist.
static bool isMissing(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::file_type type = std::filesystem::status(path, error).type();
    return type == std::filesystem::file_type::not_found || type == std::filesystem::file_type::directory;
}

static bool isEmbedded(const Declared& declared) {
    return std::ranges::any_of(declared.type.embeddedIn, [&](const String& path) {
        const Input* contents = follow(declared.input, path);
        return contents && hasContents(*contents);
    });
}

void checkFile(const Declared& declared, const std::string& folder, Findings& findings) {
    const Input& input = declared.input;
    if (!declared.type.isFile || input.type() != AttrType::String || input.linkedNode())
        return;
    const std::string name = input.value().asString();
    if (name.empty() || isUri(name) || isEmbedded(declared))
        return;
    std::string other = name;
    std::ranges::replace(other, '\\', '/');
    const std::filesystem::path from(folder);
    if (isMissing(from / name) && isMissing(from / other))
        findings.add(input, messages::missingFile, shortened(name).c_str(), pathText(input).c_str());
}

} // namespace vrn::check

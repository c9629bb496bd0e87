#include "convert/import/assimp/StlText.h"

#include "convert/import/Words.h"

#include <algorithm>

namespace vrn::convert {

namespace {

std::string lower(std::string_view text) {
    std::string lowered(text);
    std::ranges::transform(lowered, lowered.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lowered;
}

std::string firstWord(std::string_view line) { return lower(takeWord(line)); }

// The header of a binary file may begin like a text. The number of its facets has a byte of 0.
bool isText(std::string_view content) {
    return content.find('\0') == std::string_view::npos && firstWord(content.substr(0, content.find('\n'))) == "solid";
}

// Names keep their case.
std::string withLowerCaseKeyword(std::string_view line) {
    const std::string keyword = firstWord(line);
    if (keyword != "solid" && keyword != "endsolid")
        return lower(line);
    const std::size_t end = line.find_first_not_of(" \t") + keyword.size();
    return lower(line.substr(0, end)) + std::string(line.substr(end));
}

} // namespace

std::string withLowerCaseKeywords(std::string_view content) {
    if (!isText(content))
        return {};
    std::string changed;
    changed.reserve(content.size() + 1);
    for (std::string_view rest = content; !rest.empty();)
        changed += withLowerCaseKeyword(takeLine(rest)) + '\n';
    return changed.starts_with(content) ? std::string() : changed;
}

} // namespace vrn::convert

#include "convert/import/assimp/PlyCheck.h"

#include "convert/import/Words.h"
#include "convert/import/assimp/PlyData.h"
#include "convert/shared/Errors.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace vrn::convert {

namespace {

constexpr std::string_view endOfHeader = "end_header";

// What Assimp reads of vertices and of faces.
constexpr std::string_view vertexProperties[] = {"x",     "y",    "z",     "nx", "ny",        "nz",       "red",
                                                 "green", "blue", "alpha", "r",  "g",         "b",        "a",
                                                 "s",     "t",    "u",     "v",  "texture_u", "texture_v"};
constexpr std::string_view faceProperties[] = {"vertex_indices", "vertex_index", "texcoord"};

// The position after the line end of the header; that of the end if there is none.
std::size_t dataStart(std::string_view content) {
    const std::size_t header = content.find(endOfHeader);
    const std::size_t end = header == std::string_view::npos ? header : content.find('\n', header);
    return end == std::string_view::npos ? content.size() : end + 1;
}

std::vector<std::string_view> wordsOf(std::string_view line) {
    std::vector<std::string_view> words;
    while (!line.empty())
        words.push_back(takeWord(line));
    return words;
}

bool isRead(std::string_view element, std::string_view property) {
    return element == "face" ? std::ranges::find(faceProperties, property) != std::end(faceProperties)
                             : std::ranges::find(vertexProperties, property) != std::end(vertexProperties);
}

} // namespace

void checkPly(std::string_view content, const std::string& path, Losses& losses) {
    const std::size_t start = dataStart(content);
    std::string_view header = content.substr(0, start);
    checkPlyData(header, content.substr(start), path);
    std::string_view element;
    while (!header.empty()) {
        const std::vector<std::string_view> words = wordsOf(takeLine(header));
        if (words.size() < 3)
            continue;
        if (words[0] == "element") {
            element = words[1];
            if (element == "tristrips" && words[2] != "0")
                throw ContentError(path, "it has triangle strips, which are not read; save it with single faces");
            if (element != "vertex" && element != "face" && words[2] != "0")
                losses.add("elements other than vertices and faces", String(element));
        } else if (words[0] == "property" && (element == "vertex" || element == "face") &&
                   !isRead(element, words.back())) {
            losses.add("properties without an equivalent", String(element) + "." + String(words.back()));
        }
    }
}

bool beginsDataWithLineEnd(std::string_view content) {
    const std::size_t start = dataStart(content);
    const bool isBinary = content.substr(0, start).find("format binary") != std::string_view::npos;
    const bool endsWithReturn = start >= 2 && content[start - 2] == '\r'; // then Assimp expects the line feed
    return isBinary && !endsWithReturn && start < content.size() && (content[start] == '\n' || content[start] == '\r');
}

std::string withLineEndBeforeData(std::string_view content) {
    const std::size_t start = dataStart(content);
    std::string changed;
    changed.reserve(content.size() + 1);
    changed += content.substr(0, start);
    changed += '\n';
    changed += content.substr(start);
    return changed;
}

} // namespace vrn::convert

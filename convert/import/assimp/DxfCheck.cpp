#include "convert/import/assimp/DxfCheck.h"

#include "convert/import/Words.h"

#include <algorithm>
#include <iterator>

namespace vrn::convert {

namespace {

// What Assimp reads, and what encloses it.
constexpr std::string_view readEntities[] = {"3DFACE", "LINE",  "3DLINE", "POLYLINE", "VERTEX",
                                             "SEQEND", "BLOCK", "ENDBLK", "INSERT",   "ENDSEC"};

std::string_view takeTrimmedLine(std::string_view& text) {
    std::string_view line = takeLine(text);
    return takeWord(line);
}

} // namespace

void checkDxf(std::string_view content, const std::string& path, Losses& losses) {
    bool isDrawing = false; // in a section of entities
    bool isSection = false; // the name of a section follows
    bool hasEnd = false;
    for (u64 line = 2; !content.empty(); line += 2) {
        const std::string_view code = takeTrimmedLine(content);
        const std::string_view value = takeTrimmedLine(content);
        if (code == "2" && isSection)
            isDrawing = value == "ENTITIES" || value == "BLOCKS";
        isSection = code == "0" && value == "SECTION";
        if (code != "0")
            continue;
        if (value == "ENDSEC")
            isDrawing = false;
        hasEnd = hasEnd || value == "EOF";
        if (isDrawing && std::ranges::find(readEntities, value) == std::end(readEntities))
            losses.add("entities of type " + std::string(value), [&] {
                return String::format("%s line %llu", path.c_str(), static_cast<unsigned long long>(line));
            });
    }
    if (!hasEnd)
        losses.warn("the end of the file is missing: it may be cut off");
}

} // namespace vrn::convert

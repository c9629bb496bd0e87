#include "convert/import/assimp/BvhCheck.h"

#include "convert/import/Words.h"
#include "convert/shared/Errors.h"
#include "convert/shared/SceneNames.h"

namespace vrn::convert {

void checkBvh(std::string_view content, const std::string& path) {
    for (u64 number = 1; !content.empty(); ++number) {
        std::string_view line = takeLine(content);
        if (takeWord(line) == "CHANNELS" && takeWord(line) != "6" && line.find("position") != std::string_view::npos)
            throw ContentError(path, "line " + std::to_string(number) +
                                         " has positions without three rotations, which are not read");
    }
}

} // namespace vrn::convert

#include "tests/support/Texts.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace vrn::test {

namespace fs = std::filesystem;

static void add(const fs::path& folder, std::vector<fs::path>& paths) {
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".vrn")
            paths.push_back(entry.path());
}

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> goldenTexts() {
    std::vector<fs::path> paths;
    for (const char* kind : {"accept", "reject"})
        add(fs::path(VRN_TEST_DATA) / kind, paths);
    std::ranges::sort(paths);
    return paths;
}

std::vector<fs::path> allTexts() {
    std::vector<fs::path> paths = goldenTexts();
    add(fs::path(VRN_TEST_DATA) / "../../examples", paths);
    return paths;
}

} // namespace vrn::test

// Runs a fuzzer on existing inputs: replay FILE-OR-FOLDER...
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::vector<std::filesystem::path> filesOf(int count, char** arguments) {
    std::vector<std::filesystem::path> files;
    for (const std::filesystem::path path : std::vector<std::string>(arguments, arguments + count)) {
        if (!std::filesystem::is_directory(path)) {
            files.push_back(path);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
            if (entry.is_regular_file())
                files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

} // namespace

int main(int argc, char** argv) {
    const auto files = filesOf(argc - 1, argv + 1);
    for (const auto& path : files) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        std::fprintf(stderr, "%s\n", path.c_str());
        (void)LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    }
    std::printf("%zu files\n", files.size());
    return files.empty() ? 1 : 0;
}

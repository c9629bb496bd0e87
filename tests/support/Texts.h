// The VRN files of tests/data and examples.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vrn::test {

[[nodiscard]] std::string contentOf(const std::filesystem::path& path);

// goldenTexts: those with an expected scene and log, sorted by path. allTexts: those and the examples.
[[nodiscard]] std::vector<std::filesystem::path> goldenTexts();
[[nodiscard]] std::vector<std::filesystem::path> allTexts();

} // namespace vrn::test

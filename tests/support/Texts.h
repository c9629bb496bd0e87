// The texts of tests/data and of the examples.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vrn::test {

[[nodiscard]] std::string contentOf(const std::filesystem::path& path);

// Those with an expected scene and log beside them, in the order of their names; and the examples besides.
[[nodiscard]] std::vector<std::filesystem::path> goldenTexts();
[[nodiscard]] std::vector<std::filesystem::path> allTexts();

} // namespace vrn::test

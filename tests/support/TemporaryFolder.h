// A folder of its own for each test, also of programs that run at the same time.
//
//     const TemporaryFolder folder;
//     std::ofstream(folder.at("a.vrn")) << "t a;";
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vrn::test {

class TemporaryFolder {
public:
    TemporaryFolder() : path_(std::filesystem::temp_directory_path() / "vrn-XXXXXX") {
        if (!mkdtemp(path_.data()))
            throw std::runtime_error("cannot create " + path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string at(const std::string& name) const { return path_ + '/' + name; }

private:
    std::string path_;
};

} // namespace vrn::test

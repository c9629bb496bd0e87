// The file access of Assimp: only regular files, one of which can be replaced by bytes in memory.
#pragma once

#include <assimp/DefaultIOSystem.h>
#include <assimp/MemoryIOWrapper.h>
#include <filesystem>
#include <string>
#include <string_view>

namespace vrn::convert {

class ModelFiles : public Assimp::DefaultIOSystem {
public:
    ModelFiles() = default;
    ModelFiles(std::string path, std::string bytes) : path_(std::move(path)), bytes_(std::move(bytes)) {}

    // Reading a pipe or device might never end.
    bool Exists(const char* path) const override {
        std::error_code error;
        return std::filesystem::is_regular_file(path, error);
    }
    Assimp::IOStream* Open(const char* path, const char* mode) override {
        if (!path_.empty() && path_ == path)
            return new Assimp::MemoryIOStream(reinterpret_cast<const unsigned char*>(bytes_.data()), bytes_.size());
        return Exists(path) ? DefaultIOSystem::Open(path, mode) : nullptr;
    }

private:
    std::string path_;
    std::string bytes_;
};

} // namespace vrn::convert

// The file access of Assimp: only regular files.
#pragma once

#include <assimp/DefaultIOSystem.h>
#include <filesystem>

namespace vrn::convert {

class ModelFiles : public Assimp::DefaultIOSystem {
public:
    // Reading a pipe or device might never end.
    bool Exists(const char* path) const override {
        std::error_code error;
        return std::filesystem::is_regular_file(path, error);
    }
    Assimp::IOStream* Open(const char* path, const char* mode) override {
        return Exists(path) ? DefaultIOSystem::Open(path, mode) : nullptr;
    }
};

} // namespace vrn::convert

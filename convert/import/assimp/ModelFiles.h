// The file access of Assimp: only regular files, with changes that Assimp needs to read some of them right.
#pragma once

#include <assimp/DefaultIOSystem.h>
#include <functional>
#include <string>
#include <unordered_map>

namespace vrn::convert {

class ModelFiles : public Assimp::DefaultIOSystem {
public:
    // Has Assimp read `content` instead of what the file contains. The file need not exist.
    void replace(const std::string& path, std::string content) { contents_[path] = std::move(content); }

    // What Assimp reads of a file. Throws FileError.
    [[nodiscard]] std::string contentOf(const std::string& path) const;

    // Has Assimp read what `take` makes of the content of material libraries.
    void onLibrary(std::function<std::string(std::string)> take) { takeLibrary_ = std::move(take); }

    bool Exists(const char* path) const override;
    Assimp::IOStream* Open(const char* path, const char* mode) override;

private:
    void prepare(const char* path);

    std::function<std::string(std::string)> takeLibrary_{};
    // Streams view these; files that are opened again keep their place.
    std::unordered_map<std::string, std::string> contents_;
};

} // namespace vrn::convert

#include "convert/import/assimp/ModelFiles.h"

#include "convert/shared/Extension.h"
#include "convert/shared/FileContent.h"

#include <assimp/MemoryIOWrapper.h>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace vrn::convert {

namespace {

bool beginsWithUtf16(const char* path) {
    std::ifstream file(path, std::ios::binary);
    char start[2] = {};
    file.read(start, sizeof start);
    const std::string_view mark(start, sizeof start);
    return mark == "\xFF\xFE" || mark == "\xFE\xFF";
}

} // namespace

// Reading a pipe or device might never end.
bool ModelFiles::Exists(const char* path) const {
    std::error_code error;
    return contents_.contains(path) || std::filesystem::is_regular_file(path, error);
}

Assimp::IOStream* ModelFiles::Open(const char* path, const char* mode) {
    if (!Exists(path))
        return nullptr;
    if (!contents_.contains(path))
        prepare(path);
    const auto found = contents_.find(path);
    if (found == contents_.end())
        return DefaultIOSystem::Open(path, mode);
    return new Assimp::MemoryIOStream(reinterpret_cast<const std::uint8_t*>(found->second.data()),
                                      found->second.size());
}

std::string ModelFiles::contentOf(const std::string& path) const {
    const auto replaced = contents_.find(path);
    return replaced == contents_.end() ? readText(path) : replaced->second;
}

void ModelFiles::prepare(const char* path) {
    const bool isLibrary = takeLibrary_ && extensionOf(path) == ".mtl";
    if (!isLibrary && !beginsWithUtf16(path))
        return;
    if (isLibrary)
        replace(path, takeLibrary_(readText(path)));
    else
        replace(path, readText(path));
}

} // namespace vrn::convert

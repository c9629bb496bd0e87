#include "convert/shared/TexturePaths.h"

#include "convert/shared/Uri.h"

#include <algorithm>
#include <filesystem>

namespace vrn::convert {

namespace {

std::filesystem::path folderOf(const std::string& file) {
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(file, error);
    return error ? std::filesystem::path() : std::filesystem::weakly_canonical(whole.parent_path(), error);
}

} // namespace

TexturePaths::TexturePaths(const std::string& from, const std::string& to) {
    const std::filesystem::path way = folderOf(from).lexically_relative(folderOf(to));
    way_ = way == "." ? "" : way.string();
}

std::string TexturePaths::of(std::string_view path) const {
    if (way_.empty() || path.empty() || !isRelative(path))
        return std::string(path);
    std::string relative(path);
    std::ranges::replace(relative, '\\', '/');
    return (std::filesystem::path(way_) / relative).lexically_normal().string();
}

} // namespace vrn::convert

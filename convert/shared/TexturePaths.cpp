#include "convert/shared/TexturePaths.h"

#include "convert/shared/Uri.h"

#include <algorithm>
#include <filesystem>

namespace vrn::convert {

namespace {

std::filesystem::path folderOf(const std::string& file) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(file, error);
    return error ? std::filesystem::path() : std::filesystem::weakly_canonical(absolute.parent_path(), error);
}

} // namespace

TexturePaths::TexturePaths(const std::string& from, const std::string& to) {
    const std::filesystem::path prefix = folderOf(from).lexically_relative(folderOf(to));
    prefix_ = prefix == "." ? "" : prefix.string();
}

std::string TexturePaths::rebase(std::string_view path) const {
    if (prefix_.empty() || path.empty() || !isRelative(path))
        return std::string(path);
    std::string relative(path);
    std::ranges::replace(relative, '\\', '/');
    return (std::filesystem::path(prefix_) / relative).lexically_normal().string();
}

} // namespace vrn::convert

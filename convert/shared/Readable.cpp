#include "convert/shared/Readable.h"

#include "convert/shared/Errors.h"
#include "scene/core/File.h"

#include <filesystem>

namespace vrn::convert {

void checkReadable(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !is_regular_file(status) && !is_directory(status))
        throw FileError(path, "only regular files can be converted from formats other than .vrn");
    vor::File file = vor::File::open(std::string_view(path));
    char first = 0;
    (void)file.read(first);
    if (!file.error().isEmpty())
        throw FileError(path, file.error().buf());
}

} // namespace vrn::convert

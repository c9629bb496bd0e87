#include "convert/shared/FileContent.h"

#include "convert/shared/Errors.h"
#include "convert/shared/Utf16.h"
#include "scene/core/File.h"

namespace vrn::convert {

std::string readContent(const std::string& path) {
    vor::File file = vor::File::open(std::string_view(path));
    std::string content;
    for (std::string_view block = file.readBlock(); !block.empty(); block = file.readBlock())
        content += block;
    if (!file.error().isEmpty())
        throw FileError(path, file.error().buf());
    return content;
}

std::string readText(const std::string& path) {
    std::string content = readContent(path);
    std::optional<std::string> text = utf8FromUtf16(content);
    return text ? std::move(*text) : content;
}

} // namespace vrn::convert

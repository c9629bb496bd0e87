#include "convert/import/gltf/GltfContainer.h"

#include "convert/shared/Errors.h"
#include "convert/shared/LittleEndian.h"

namespace vrn::convert {

namespace {

constexpr std::size_t headerSize = 12; // of a GLB; the header of a chunk has 8 bytes

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

} // namespace

GltfContainer openContainer(const std::string& path, std::string_view bytes) {
    if (!bytes.starts_with("glTF"))
        return {.json = withoutByteOrderMark(bytes), .binary = {}};
    if (bytes.size() < headerSize || littleEndian32At(bytes, 4) != 2)
        throw ContentError(path, "it is not a GLB of version 2");
    if (littleEndian32At(bytes, 8) > bytes.size())
        throw ContentError(path, "the GLB is shorter than its header says: it is cut off");
    bytes = bytes.substr(0, littleEndian32At(bytes, 8));
    GltfContainer container;
    std::size_t index = 0;
    for (std::size_t at = headerSize; at < bytes.size(); ++index) {
        if (bytes.size() - at < 8 || littleEndian32At(bytes, at) > bytes.size() - at - 8)
            throw ContentError(path, "chunk " + std::to_string(index) + " of the GLB exceeds the file");
        const std::string_view chunk = bytes.substr(at + 8, littleEndian32At(bytes, at));
        const std::string_view type = bytes.substr(at + 4, 4);
        if (index == 0 && type == "JSON")
            container.json = chunk;
        else if (index == 1 && type == std::string_view("BIN\0", 4))
            container.binary = chunk; // chunks of other types are to be ignored
        at += 8 + chunk.size();
    }
    if (!container.json.data())
        throw ContentError(path, "the first chunk of the GLB is not JSON");
    return container;
}

} // namespace vrn::convert

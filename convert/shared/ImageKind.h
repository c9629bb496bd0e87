// Image formats, detected by their signatures.
#pragma once

#include "scene/core/Types.h"

#include <span>
#include <string_view>

namespace vrn::convert {

[[nodiscard]] inline bool isPng(std::span<const vor::u8> image) {
    return image.size() > 4 && image[0] == 0x89 && image[1] == 'P' && image[2] == 'N' && image[3] == 'G';
}

[[nodiscard]] inline bool isJpeg(std::span<const vor::u8> image) {
    return image.size() > 4 && image[0] == 0xFF && image[1] == 0xD8 && image[2] == 0xFF;
}

// The media type of an image; null if it is of another format.
[[nodiscard]] inline const char* mimeTypeOf(std::span<const vor::u8> image) {
    const std::string_view bytes(reinterpret_cast<const char*>(image.data()), image.size());
    if (isPng(image))
        return "image/png";
    if (isJpeg(image))
        return "image/jpeg";
    if (bytes.starts_with("RIFF") && bytes.size() > 12 && bytes.substr(8, 4) == "WEBP")
        return "image/webp";
    return bytes.starts_with("\xABKTX 20\xBB") ? "image/ktx2" : nullptr;
}

// The media type that the extension of a path stands for, `.png`; empty if it stands for none of these.
[[nodiscard]] inline std::string_view mimeTypeOfExtension(std::string_view extension) {
    return extension == ".png"                           ? "image/png"
           : extension == ".jpg" || extension == ".jpeg" ? "image/jpeg"
           : extension == ".webp"                        ? "image/webp"
           : extension == ".ktx2"                        ? "image/ktx2"
                                                         : "";
}

} // namespace vrn::convert

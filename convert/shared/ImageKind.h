// Image formats, detected by their signatures.
#pragma once

#include "scene/core/Types.h"

#include <span>

namespace vrn::convert {

[[nodiscard]] inline bool isPng(std::span<const vor::u8> image) {
    return image.size() > 4 && image[0] == 0x89 && image[1] == 'P' && image[2] == 'N' && image[3] == 'G';
}

[[nodiscard]] inline bool isJpeg(std::span<const vor::u8> image) {
    return image.size() > 4 && image[0] == 0xFF && image[1] == 0xD8 && image[2] == 0xFF;
}

} // namespace vrn::convert

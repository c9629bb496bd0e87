#include "convert/shared/ImageKind.h"

#include <gtest/gtest.h>
#include <vector>

namespace vrn::test {

using namespace vrn::convert;
using vor::u8;

TEST(ImageKind, isRecognisedByItsSignature) {
    const std::vector<u8> png = {0x89, 'P', 'N', 'G', 13};
    const std::vector<u8> jpeg = {0xFF, 0xD8, 0xFF, 0xE0, 0};
    EXPECT_TRUE(isPng(png));
    EXPECT_FALSE(isJpeg(png));
    EXPECT_TRUE(isJpeg(jpeg));
    EXPECT_FALSE(isPng(jpeg));
    for (std::size_t size = 0; size < 5; ++size) {
        EXPECT_FALSE(isPng(std::span(png).first(size)));
        EXPECT_FALSE(isJpeg(std::span(jpeg).first(size)));
    }
    for (std::size_t i = 0; i < 4; ++i) {
        std::vector<u8> broken = png;
        broken[i] ^= 1;
        EXPECT_FALSE(isPng(broken)) << i;
        broken = jpeg;
        broken[i] ^= 1;
        EXPECT_EQ(isJpeg(broken), i == 3) << i;
    }
}

} // namespace vrn::test

#include "scene/core/Hash.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace vrn::test {

using namespace vor;

TEST(Hash, isThatOfEqualTexts) {
    // At different alignments, with other bytes around them.
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string text =
            std::string("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_-+*/&%$").substr(0, length);
        const std::string shifted = "x" + text + "y";
        EXPECT_EQ(keyedHash(text), keyedHash(std::string_view(shifted).substr(1, length))) << length;
    }
}

TEST(Hash, dependsOnEachByteAndTheLength) {
    for (std::size_t length = 1; length < 70; ++length) {
        std::set<u64> hashes{keyedHash(std::string(length, 'a')), keyedHash(std::string(length - 1, 'a')),
                             keyedHash(std::string(length, 'a') + '\0')};
        for (std::size_t i = 0; i < length; ++i) {
            std::string changed(length, 'a');
            changed[i] = 'b';
            hashes.insert(keyedHash(changed));
        }
        EXPECT_EQ(hashes.size(), length + 3) << length;
    }
}

// The low bits select the slot, the high bits the tag: both must be uniform for similar keys and any seed. Of 4096 keys
// in 256 groups, the largest group has about 30.
template <class KeyOf> static std::size_t largestGroup(int shift, KeyOf keyOf) {
    std::vector<std::size_t> sizes(256);
    for (u64 i = 0; i < 4096; ++i)
        ++sizes[keyedHash(keyOf(i)) >> shift & 255];
    return *std::max_element(sizes.begin(), sizes.end());
}

TEST(Hash, spreadsSimilarKeys) {
    for (const int shift : {0, 8, 56}) {
        EXPECT_LT(largestGroup(shift, [](u64 i) { return i; }), 64U);
        EXPECT_LT(largestGroup(shift, [](u64 i) { return i << 12; }), 64U);
        EXPECT_LT(largestGroup(shift, [](u64 i) { return i << 48; }), 64U);
        EXPECT_LT(largestGroup(shift, [](u64 i) { return "node" + std::to_string(i); }), 64U);
        EXPECT_LT(largestGroup(shift, [](u64 i) { return std::to_string(i) + "_a_name_of_many_letters"; }), 64U);
    }
}

} // namespace vrn::test

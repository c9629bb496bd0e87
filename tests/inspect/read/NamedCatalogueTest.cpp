#include "inspect/read/NamedCatalogue.h"

#include "scene/CatalogueJson.h"

#include <gtest/gtest.h>

namespace vrn::test {

using namespace vor::velmo_sdk::impl;
using namespace vrn::inspect;

TEST(NamedCatalogue, isBuiltInOrAFile) {
    const auto builtin = readNamedCatalogue("builtin");
    const auto file = readNamedCatalogue(VRN_TEST_DATA "/../../catalogues/scene.json");
    for (const char* type : {"mesh", "camera"}) {
        ASSERT_NE(builtin->find(type), nullptr) << type;
        EXPECT_EQ(builtin->find(type)->inputs().size(), file->find(type)->inputs().size()) << type;
    }
    EXPECT_EQ(builtin->find("nothing"), nullptr);
}

TEST(NamedCatalogue, reportsWhyItCannotBeRead) {
    try {
        (void)readNamedCatalogue("/nowhere");
        ADD_FAILURE();
    } catch (const UnreadableFile& error) {
        EXPECT_STREQ(error.what(), "No such file or directory");
    }
    EXPECT_THROW((void)readNamedCatalogue(VRN_TEST_DATA), UnreadableFile); // a folder
    EXPECT_THROW((void)readNamedCatalogue(VRN_TEST_DATA "/../CMakeLists.txt"), CatalogueError);
}

} // namespace vrn::test

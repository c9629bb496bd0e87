// The converter with WithoutAssimp.cpp in place of what needs Assimp, which this program does not link.
#include "convert/Convert.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace vrn::convert;
using vrn::test::TemporaryFolder;

namespace {

TEST(WithoutAssimp, namesTheFormatsThatAreLeft) {
    EXPECT_EQ(readableExtensions(), ".glb .gltf");
    EXPECT_TRUE(canRead(".gltf"));
    EXPECT_TRUE(canRead(".glb"));
    EXPECT_FALSE(canRead(".obj"));
    EXPECT_FALSE(canRead(".fbx"));
    EXPECT_FALSE(canRead(""));
}

TEST(WithoutAssimp, writesAllFormats) { EXPECT_EQ(writableExtensions(), ".vrn .json .gltf .glb .obj .ply .stl"); }

TEST(WithoutAssimp, readsGltf) {
    const TemporaryFolder folder;
    const std::string path = folder.at("in.gltf");
    std::ofstream(path) << R"({"asset": {"version": "2.0"},
        "scene": 0, "scenes": [{"nodes": [0]}], "nodes": [{"name": "one"}]})";
    Scene scene;
    Losses losses;
    readModel(path, scene, losses, {});
    EXPECT_NE(scene.findNode("one"), nullptr);
    EXPECT_TRUE(losses.all().empty());
}

TEST(WithoutAssimp, refusesOtherFormatsAndSaysWhatReadsThem) {
    const TemporaryFolder folder;
    const std::string path = folder.at("in.obj");
    std::ofstream(path) << "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    Scene scene;
    Losses losses;
    try {
        readModel(path, scene, losses, {});
        FAIL();
    } catch (const FileError& error) {
        EXPECT_EQ(error.path(), path);
        EXPECT_STREQ(error.what(),
                     "this build has readers for .glb and .gltf only; the command `vrn convert` has others");
    }
}

} // namespace

#include "tests/support/Reading.h"

namespace vrn::test {

static std::string compact(const char* text, bool hasData = true) {
    const Reading r = readText(text);
    std::string json;
    writeSceneJson(*r.scene, {.isCompact = true, .hasBufferData = hasData},
                   [&](std::string_view piece) { json += piece; });
    return json;
}

TEST(SceneJson, writesNumbersShortAndOddOnesAsText) {
    EXPECT_EQ(compact("t n; n.a = vec4(0.1 inf -inf -nan); n.b = float[3] {0.1 nan -inf}; n.c = 1e300f;"),
              R"({"version":1,"time":"","comments":[],"nodes":[{"name":"n","type":"t","inputs":[)"
              R"({"name":"a","type":"Vec4","value":[0.1,"inf","-inf","nan"]},)"
              R"({"name":"b","type":"Buffer","dataType":"Float","count":3,"data":[0.1,"nan","-inf"]},)"
              R"({"name":"c","type":"Real","value":1e+300}]}]})"
              "\n");
}

TEST(SceneJson, leavesDataOutOnRequest) {
    EXPECT_NE(compact("t n; n.b = byte[2] {1 2};", true).find(R"("count":2,"data":[1,2]})"), std::string::npos);
    EXPECT_NE(compact("t n; n.b = byte[2] {1 2};", false).find(R"("count":2})"), std::string::npos);
}

TEST(SceneJson, writesBytesThatAreNoTextAsReplacements) {
    EXPECT_NE(compact("# \xC4\x80 \x80\n").find("\"# \xC4\x80 \xEF\xBF\xBD\""), std::string::npos);
}

TEST(SceneJson, handsOnPiecesOfAboutTheSameSize) {
    const Reading r = readText("t n; n.b = byte[100000] {1};");
    std::size_t pieces = 0;
    std::size_t largest = 0;
    writeSceneJson(*r.scene, {}, [&](std::string_view piece) {
        ++pieces;
        largest = std::max(largest, piece.size());
    });
    EXPECT_GE(pieces, 4U);
    EXPECT_EQ(largest, 65536U);
}

} // namespace vrn::test

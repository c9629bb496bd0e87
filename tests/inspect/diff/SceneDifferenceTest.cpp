// The differences of two texts, as lines and as JSON.
#include "inspect/diff/SceneDifference.h"

#include "inspect/diff/DifferenceText.h"
#include "tests/support/Reading.h"

#include <limits>

namespace vrn::test {

using namespace vrn::inspect;

namespace {

struct Texts {
    std::string lines;
    std::string json;
};

Texts differences(const char* before, const char* after, double tolerance = 0) {
    const Reading a = readText(before);
    const Reading b = readText(after);
    Texts texts;
    compareScenes(*a.scene, *b.scene, tolerance, [&](const Difference& difference) {
        texts.lines += differenceLine(difference, Style(false));
        texts.json += differenceJson(difference);
    });
    return texts;
}

} // namespace

TEST(SceneDifference, isReportedOfEachKind) {
    const struct {
        const char* before;
        const char* after;
        const char* line;
        const char* json;
    } cases[] = {
        {"t n; n.x = 1;", "t n; n.x = 2;", "~ n.x: 1 -> 2\n",
         R"({"change":"changed","aspect":"value","path":"n.x","before":1,"after":2})"},
        {"t n;", "t n; n.x = 2;", "+ n.x: Int = 2\n",
         R"({"change":"added","aspect":"input","path":"n.x","type":"Int"})"},
        {"t n; n.x = 2;", "t n;", "- n.x: Int = 2\n",
         R"({"change":"removed","aspect":"input","path":"n.x","type":"Int"})"},
        {"t n; u m;", "t n;", "- m (u)\n", R"({"change":"removed","aspect":"node","path":"m","type":"u"})"},
        {"t n;", "u n;", "~ n: type t -> u\n",
         R"({"change":"changed","aspect":"type","path":"n","before":"t","after":"u"})"},
        {"t n; u m;", "u m; t n;", "~ order of nodes: first n -> m\n",
         R"({"change":"changed","aspect":"nodeOrder","before":"n","after":"m"})"},
        {"t n; n.x = 1;", "t n; n.x = 1.5;", "~ n.x: type Int -> Real\n",
         R"({"change":"changed","aspect":"type","path":"n.x","before":"Int","after":"Real"})"},
        {"t n; n.x = n;", "t n; n.x = null;", "~ n.x: reference n -> none\n",
         R"({"change":"changed","aspect":"reference","path":"n.x","before":"n","after":null})"},
        {"t n; n.x = 1;", "t n; n.x = 1; n.x |= n.out;", "~ n.x: connection none -> n.out\n",
         R"({"change":"changed","aspect":"connection","path":"n.x","before":null,"after":"n.out"})"},
        {"t n; n.x[1] = 1;", "t n; n.x[2] = 0; n.x[1] = 1;", "~ n.x: 2 -> 3 elements\n",
         R"({"change":"changed","aspect":"count","path":"n.x","before":2,"after":3})"},
        {"t n; n.x = float[3] {1 2 3};", "t n; n.x = float[3] {1 2.5 4};",
         "~ n.x: 2 of 3 elements differ, largest difference 1 at 2, first at 1\n",
         R"({"change":"changed","aspect":"elements","path":"n.x","differing":2,"compared":3,"first":1,"largestAt":2,"largest":1})"},
        {"t n; n.x = float[1] {1};", "t n; n.x = byte[1] {1};", "~ n.x: element type float -> byte\n",
         R"({"change":"changed","aspect":"dataType","path":"n.x","before":"float","after":"byte"})"},
    };
    for (const auto& c : cases) {
        const Texts found = differences(c.before, c.after);
        EXPECT_EQ(found.lines, c.line) << c.before;
        EXPECT_EQ(found.json, std::string(c.json) + '\n') << c.before;
        const Texts none = differences(c.before, c.before);
        EXPECT_EQ(none.lines + none.json, "") << c.before;
    }
}

TEST(SceneDifference, ofRealNumbersMayBeTolerated) {
    EXPECT_EQ(differences("t n; n.x = 1.0;", "t n; n.x = 1.25;", 0.25).lines, "");
    EXPECT_EQ(differences("t n; n.x = 1.0;", "t n; n.x = 1.25;", 0.24).lines, "~ n.x: 1 -> 1.25\n");
    EXPECT_EQ(differences("t n; n.x = 1;", "t n; n.x = 2;", 5).lines, "~ n.x: 1 -> 2\n"); // integers are exact
}

TEST(SceneDifference, showsWhereLongStringsDiffer) {
    const std::string same(100, 'x');
    const std::string before = "t n; n.x = \"" + same + "a\";";
    const std::string after = "t n; n.x = \"" + same + "b\";";
    EXPECT_EQ(differences(before.c_str(), after.c_str()).lines,
              "~ n.x: from byte 100: \"..." + std::string(20, 'x') + "a\" -> \"..." + std::string(20, 'x') + "b\"\n");
}

TEST(SceneDifference, cutsTextsBetweenCharacters) {
    std::string umlauts;
    for (int i = 0; i < 600; ++i)
        umlauts += "ä";
    const Texts texts =
        differences(("t n; n.x = \"" + umlauts + "a\";").c_str(), ("t n; n.x = \"" + umlauts + "b\";").c_str());
    EXPECT_NE(texts.lines.find("\"...ää"), std::string::npos) << texts.lines;
    const std::string path = 'x' + umlauts + 'y';
    const Difference difference{
        .change = Change::Changed, .aspect = Aspect::Type, .path = path, .before = "Int", .after = "Real"};
    const std::string line = differenceLine(difference, Style(false));
    EXPECT_EQ(line.find('\\'), std::string::npos) << line; // no byte of a character is left alone
    EXPECT_NE(line.find("ä...ä"), std::string::npos) << line;
}

TEST(SceneDifference, isColouredByItsKind) {
    const Reading a = readText("t n; n.x = 1;");
    const Reading b = readText("t n; n.y = 1;");
    std::string lines;
    compareScenes(*a.scene, *b.scene, 0,
                  [&](const Difference& difference) { lines += differenceLine(difference, Style(true)); });
    EXPECT_EQ(lines, "\x1B[31m- n.x\x1B[0m: \x1B[36mInt\x1B[0m = 1\n\x1B[32m+ n.y\x1B[0m: \x1B[36mInt\x1B[0m = 1\n");
}

TEST(NumbersDifference, distinguishesNanAndUnderflow) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const double smallest = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(distance(nan, nan), 0);
    EXPECT_EQ(distance(0.0, -0.0), 0);
    EXPECT_EQ(distance(nan, 1.0), infinity);
    EXPECT_EQ(distance(infinity, infinity), 0);
    EXPECT_EQ(distance(0.0, smallest), smallest);
    EXPECT_EQ(distance(std::numeric_limits<i64>::min(), std::numeric_limits<i64>::max()), 0x1p64);
    EXPECT_EQ(distance(u8(3), u8(250)), 247);
}

} // namespace vrn::test

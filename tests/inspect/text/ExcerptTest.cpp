#include "inspect/text/Excerpt.h"

#include <gtest/gtest.h>

namespace vrn::test {

using namespace vor;
using namespace vrn::inspect;

static Excerpt excerptAt(const std::string& text, i32 line, i32 column) {
    return readExcerpts(File::fromMemory(std::string_view(text)), {{line, column}}).front();
}

TEST(Excerpt, showsTheLineWithACaret) {
    const struct {
        const char* text;
        TextPosition position;
        const char* shown;
        i64 column;
    } cases[] = {
        {"one\ntwo\nthree", {2, 3}, "two\n  ^\n", 3},
        {"one\ntwo\nthree", {3, 5}, "three\n    ^\n", 5},
        {"one\n", {1, 4}, "one\n   ^\n", 4},    // the end of the line
        {"one\n", {1, 99}, "one\n   ^\n", 4},   // beyond it
        {"one\n", {2, 1}, "\n^\n", 1},          // the line after the last line feed
        {"one\n", {1, 0}, "one\n^\n", 1},       // the whole line
        {"one\n", {3, 1}, "", 0},               // no such line
        {"one\n", {0, 0}, "", 0},               // unknown
        {"one\r\ntwo", {1, 2}, "one\n ^\n", 2}, // no carriage return
        {"\ta b", {1, 2}, "\ta b\n\t^\n", 2},   // tabs stay tabs
        {"\xC3\xA4\xC3\xA4z", {1, 5}, "\xC3\xA4\xC3\xA4z\n  ^\n", 3},
        {"\x1Bz", {1, 2}, "\\x1Bz\n    ^\n", 2}, // below the escape sequence
        {"", {1, 1}, "\n^\n", 1},
    };
    for (const auto& c : cases) {
        const Excerpt excerpt = excerptAt(c.text, c.position.line, c.position.column);
        EXPECT_EQ(excerpt.withCaret(), c.shown) << c.text << ' ' << c.position.line << ',' << c.position.column;
        EXPECT_EQ(excerpt.column, c.column) << c.text << ' ' << c.position.line << ',' << c.position.column;
        EXPECT_EQ(excerpt.exists, *c.shown != '\0') << c.text;
    }
}

TEST(Excerpt, showsThePartOfALongLineAroundThePosition) {
    const std::string line(1000, 'x');
    const Excerpt middle = excerptAt(line, 1, 500);
    EXPECT_EQ(middle.withCaret(), "..." + std::string(181, 'x') + "...\n" + std::string(123, ' ') + "^\n");
    EXPECT_EQ(middle.column, 500);
    const Excerpt start = excerptAt(line, 1, 1);
    EXPECT_EQ(start.withCaret(), std::string(61, 'x') + "...\n^\n");
    const Excerpt end = excerptAt(line, 1, 1000);
    EXPECT_EQ(end.withCaret(), "..." + std::string(121, 'x') + '\n' + std::string(123, ' ') + "^\n");
}

TEST(Excerpt, neverEndsInsideACharacter) {
    std::string line;
    for (int i = 0; i < 500; ++i)
        line += "\xC3\xA4";
    for (i32 column = 400; column < 404; ++column) {
        const std::string shown = excerptAt(line, 1, column).withCaret();
        EXPECT_EQ(shown.find("\\x"), std::string::npos) << column << shown;
    }
}

TEST(Excerpt, isInTheOrderOfThePositions) {
    const std::vector<TextPosition> positions = {{3, 1}, {1, 2}, {0, 0}, {1, 1}, {9, 9}};
    std::string shown;
    for (const Excerpt& excerpt : readExcerpts(File::fromMemory("a1\nb2\nc3\n"), positions))
        shown += excerpt.text + '@' + std::to_string(excerpt.column) + ' ';
    EXPECT_EQ(shown, "c3@1 a1@2 @0 a1@1 @0 ");
}

} // namespace vrn::test

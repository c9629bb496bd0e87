#include "inspect/path/Glob.h"

#include <gtest/gtest.h>

namespace vrn::test {

using namespace vrn::inspect;

TEST(Glob, matchesTheWholeText) {
    const struct {
        const char* text;
        const char* pattern;
        bool isMatch;
    } cases[] = {
        {"", "", true},
        {"", "*", true},
        {"", "?", false},
        {"mesh", "mesh", true},
        {"mesh", "mes", false},
        {"mesh", "mesha", false},
        {"mesh", "m*", true},
        {"mesh", "*h", true},
        {"mesh", "*e*", true},
        {"mesh", "*x*", false},
        {"mesh", "m??h", true},
        {"mesh", "m?h", false},
        {"mesh", "m**h*", true},
        {"aab", "*ab", true}, // the first try of the star is wrong
        {"aXbXc", "a*X*c", true},
        {"aXbXc", "a*X?", true},
        {"aXbXd", "a*X*c", false},
        {"\xC3\xA4", "?", true}, // one character of two bytes
        {"\xC3\xA4", "??", false},
        {"\xFF\xFE", "??", true}, // bytes that are not UTF-8
        {"\xC3\xA4z", "*?", true},
        {"[a]", "[a]", true}, // no sets of characters
        {"a", "[a]", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(matchesGlob(c.text, c.pattern), c.isMatch) << c.text << ' ' << c.pattern;
}

TEST(Glob, isAPatternWithAStarOrAQuestionMark) {
    EXPECT_TRUE(isGlob("a*"));
    EXPECT_TRUE(isGlob("?"));
    EXPECT_FALSE(isGlob("a[0].b"));
    EXPECT_FALSE(isGlob(""));
}

} // namespace vrn::test

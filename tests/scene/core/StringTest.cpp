#include "tests/support/Reading.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <thread>

namespace vrn::test {

TEST(String, findsNoPartThatIsNotThere) {
    EXPECT_FALSE(String("abc").contains("cd", true));
    EXPECT_FALSE(String("ab").startsWith("ABC", true));
    EXPECT_FALSE(String("ab").endsWith("CAB", true));
    EXPECT_NE(String("ab").compareNoCase("abc"), 0);
}

// Constructors must not read the memory that they are given, which may contain another handle.
TEST(String, fromANumberDoesNotReadItsMemory) {
    const String text = "a text that is too long to live in its handle";
    alignas(String) std::byte place[sizeof(String)];
    std::memcpy(place, &text, sizeof place);
    String* number = new (place) String(u64(1234));
    EXPECT_EQ(*number, "1234");
    number->~String();
    const String copy = text;
    EXPECT_EQ(copy, "a text that is too long to live in its handle");
}

TEST(String, holdsTextsOfEveryLengthFollowedByANul) {
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string text(length, 'x');
        const String string{std::string_view(text)};
        EXPECT_EQ(string.len(), length);
        EXPECT_STREQ(string.buf(), text.c_str());
        EXPECT_EQ(string[length], '\0');
        EXPECT_EQ(string[length + 100], '\0');
    }
}

TEST(String, isMadeFromPointersCharactersAndNumbers) {
    EXPECT_EQ(String(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(String("abc"), "abc");
    EXPECT_EQ(String('c'), "c");
    EXPECT_EQ(String(u64(0)), "0");
    EXPECT_EQ(String(~u64(0)), "18446744073709551615");
    EXPECT_EQ(String("a\0b", 3).len(), 3U);
}

TEST(String, copiesShareAndOutliveTheOriginal) {
    for (const char* text : {"short", "a text that is too long for the handle itself"}) {
        auto original = std::make_unique<String>(text);
        String copy = *original;
        String assigned;
        assigned = copy;
        const String* self = &assigned;
        assigned = *self;
        original.reset();
        EXPECT_EQ(copy, text);
        EXPECT_EQ(assigned, text);
        String moved = std::move(copy);
        EXPECT_EQ(moved, text);
        EXPECT_TRUE(copy.isEmpty()); // NOLINT: a moved-from handle is the empty text
    }
}

TEST(String, longTextsAreSharedNotCopied) {
    const String text("a text that is too long for the handle itself");
    const String copy = text;
    EXPECT_EQ(copy.buf(), text.buf());
}

TEST(String, handlesMayBeSharedBetweenThreads) {
    const String text("a text that is too long for the handle itself");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([text] {
            for (int n = 0; n < 1000; ++n) {
                const String copy = text;
                ASSERT_EQ(copy.len(), 45U);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(String, comparesWithAndWithoutCase) {
    EXPECT_TRUE(String("Ab") == String("Ab"));
    EXPECT_FALSE(String("Ab") == "ab");
    EXPECT_EQ(String("TRUE").compareNoCase("true"), 0);
    EXPECT_LT(String("abc").compareNoCase("ABD"), 0);
    EXPECT_GT(String("abd").compareNoCase("ABC"), 0);
    EXPECT_LT(String("ab").compareNoCase("abc"), 0);
    EXPECT_GT(String("abc").compareNoCase("ab"), 0);
    EXPECT_NE(String("\xC4").compareNoCase("\xE4"), 0) << "only ASCII letters have case";
}

TEST(String, findsParts) {
    const String text("# Version: 3");
    EXPECT_FALSE(text.contains("version:"));
    EXPECT_TRUE(text.contains("version:", true));
    EXPECT_TRUE(text.contains(""));
    EXPECT_TRUE(text.startsWith("# V"));
    EXPECT_FALSE(text.startsWith("# v"));
    EXPECT_TRUE(text.startsWith("# v", true));
    EXPECT_FALSE(String("a").startsWith("ab"));
    EXPECT_TRUE(String("7u").endsWith("u"));
    EXPECT_FALSE(String("7U").endsWith("u"));
    EXPECT_TRUE(String("7U").endsWith("u", true));
    EXPECT_FALSE(String("u").endsWith("7u"));
    EXPECT_EQ(text.find('e'), 3);
    EXPECT_EQ(text.find('v'), -1);
    EXPECT_EQ(text.find('v', true), 2);
    EXPECT_EQ(String("a b c").find(' ', false, 2), 3);
    EXPECT_EQ(String("a b c").find(' ', false, 99), -1);
}

TEST(String, takesPartsOut) {
    EXPECT_EQ(String("# time: 12:00").fromFirst(':'), " 12:00");
    EXPECT_EQ(String("# time: 12:00").fromFirst(':', true), ": 12:00");
    EXPECT_EQ(String("none").fromFirst(':'), "");
    EXPECT_EQ(String(":first").fromFirst(':'), "first");
    EXPECT_EQ(String("abcdef").substring(1, 3), "bcd");
    EXPECT_EQ(String("abcdef").substring(4, 99), "ef");
    EXPECT_EQ(String("abcdef").substring(99, 1), "");
    EXPECT_EQ(String(" \t x y\r\n").trim(), "x y");
    EXPECT_EQ(String(" x ").trim(true, false), "x ");
    EXPECT_EQ(String(" x ").trim(false, true), " x");
    EXPECT_EQ(String("((1 2))").trimChars("()"), "1 2");
    EXPECT_EQ(String("[3]").trimChars("[", "]"), "3");
    EXPECT_EQ(String("]3[").trimChars("[", "]"), "]3[");
    EXPECT_EQ(String("RgbA8").toLower(), "rgba8");
    EXPECT_EQ(String("RgbA8").toLower(true), "rgbA8");
    EXPECT_EQ(String("a") + "b" + String("c"), "abc");
}

TEST(String, splits) {
    const auto parts = [](const char* text, bool skipEmpty, bool trim) {
        std::string joined;
        for (const String& part : String(text).split('.', skipEmpty, trim))
            joined += "<" + std::string(part.view()) + ">";
        return joined;
    };
    EXPECT_EQ(parts("a.b", true, false), "<a><b>");
    EXPECT_EQ(parts("a..b.", true, false), "<a><b>");
    EXPECT_EQ(parts("a..b.", false, false), "<a><><b><>");
    EXPECT_EQ(parts(" a . ", true, true), "<a>");
    EXPECT_EQ(parts(" a . ", false, true), "<a><>");
    EXPECT_EQ(parts("", false, false), "<>");
    EXPECT_EQ(parts("", true, false), "");
}

TEST(String, unescapes) {
    const struct {
        const char* written;
        const char* read;
    } cases[] = {
        {"plain", "plain"},
        {R"(\n\t\r\a\b\f\v\\\"\')", "\n\t\r\a\b\f\v\\\"'"},
        {R"(\x41\x7a)", "Az"},
        {R"(\u00e4\u20AC)", "ä€"},
        {R"(\uD83D\uDE00)", "\U0001F600"},
        {R"(\uD83D)", R"(\uD83D)"},        // a lone high surrogate
        {R"(\uDE00)", R"(\uDE00)"},        // a lone low one
        {R"(\uD83D\u0041)", R"(\uD83DA)"}, // a high one before something else
        {R"(\q\8)", R"(\q\8)"},            // unknown
        {R"(\x4)", R"(\x4)"},              // malformed
        {R"(\xg1)", R"(\xg1)"},
        {R"(\u12)", R"(\u12)"},
        {R"(\x00\u0000)", R"(\x00\u0000)"}, // would be a NUL
        {R"(end\)", R"(end\)"},
        {R"(\\n)", R"(\n)"},
        {R"(\uFFFF)", "\xEF\xBF\xBF"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(String(c.written).unescape(), c.read) << c.written;
}

TEST(String, hashesByFnv1a) {
    EXPECT_EQ(String("").hash(), 0xCBF29CE484222325U);
    EXPECT_EQ(String("a").hash(), 0xAF63DC4C8601EC8CU);
    EXPECT_EQ(String("foobar").hash(), 0x85944171F73967E8U);
}

TEST(String, formats) {
    EXPECT_EQ(String::format("%s (%d,%d): %s.", "PARSE ERROR", 1, -2, "x"), "PARSE ERROR (1,-2): x.");
    EXPECT_EQ(String::format("%s", "100% %s %n"), "100% %s %n");
    const std::string longText(1000, 'y');
    EXPECT_EQ(String::format("<%s>", longText.c_str()), "<" + String(std::string_view(longText)) + ">");
    const std::string exact(255, 'z');
    EXPECT_EQ(String::format("%s", exact.c_str()).len(), 255U);
    EXPECT_EQ(String::format("%s!", exact.c_str()).len(), 256U);
}

TEST(String, knowsCharactersOfAsciiOnly) {
    for (int i = 0; i < 256; ++i) {
        const char c = static_cast<char>(i);
        EXPECT_EQ(String::isSpace(c), i == 32 || (i >= 9 && i <= 13)) << i;
        EXPECT_EQ(String::isPrintable(c), i >= 32 && i <= 126) << i;
        EXPECT_EQ(String::isLetter(c), (i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z')) << i;
        EXPECT_EQ(String::isDigit(c), i >= '0' && i <= '9') << i;
        EXPECT_EQ(String::isHexDigit(c), i < 128 && std::strchr("0123456789abcdefABCDEF", i) && i != 0) << i;
    }
}

TEST(String, parsesComponentLists) {
    math::VecT<3> v{{7, 8, 9}};
    EXPECT_TRUE(String::parse("1 2 3", 3, v));
    EXPECT_EQ(v, (math::VecT<3>{{1, 2, 3}}));
    EXPECT_TRUE(String::parse("4 5 6 junk", 3, v)) << "what is beyond the count is ignored";
    EXPECT_EQ(v[2], 6);
    EXPECT_FALSE(String::parse("1 2", 3, v));
    EXPECT_EQ(v, (math::VecT<3>{{4, 5, 6}})) << "too few parts change nothing";
    EXPECT_FALSE(String::parse("1,2,3", 3, v));
    EXPECT_FALSE(String::parse("1 x 3", 3, v));
    EXPECT_EQ(v, (math::VecT<3>{{1, 5, 3}})) << "the parts after a bad one are still read";
    EXPECT_TRUE(String::parse("  1   2  3 ", 3, v)) << "runs of spaces separate once";
    EXPECT_TRUE(String::parse("", 0, v));
    EXPECT_FALSE(String::parse("1 2 3 4", 4, v)) << "more than the type has";
    math::MatT<4> m;
    EXPECT_TRUE(String::parse("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16", 16, m));
    EXPECT_EQ(m[15], 16);
    math::PosT<2> p;
    math::QuatT<> q;
    EXPECT_TRUE(String::parse("1 2", 2, p));
    EXPECT_TRUE(String::parse("1 2 3 4", 4, q));
}

TEST(String, parsesColoursWithAndWithoutAlpha) {
    math::RgbaT<double> c;
    EXPECT_TRUE(String::parse<double>("1 0.5 0", c));
    EXPECT_EQ(c, (math::RgbaT<double>{{1, 0.5, 0, 1}}));
    EXPECT_TRUE(String::parse<double>("1 0.5 0 0.25", c));
    EXPECT_EQ(c[3], 0.25);
    EXPECT_TRUE(String::parse<double>("1 0 0 x", c)) << "an unreadable alpha counts as none";
    EXPECT_EQ(c, (math::RgbaT<double>{{1, 0, 0, 1}}));
    EXPECT_FALSE(String::parse<double>("1 0", c));
    EXPECT_FALSE(String::parse<double>("1 x 0", c));
}

} // namespace vrn::test

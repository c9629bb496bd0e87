#include "scene/core/TextEncoding.h"
#include "tests/support/Reading.h"

namespace vrn::test {

TEST(TextEncoding, replacesEachByteThatIsNoUtf8) {
    const struct {
        const char* text;
        const char* utf8;
    } cases[] = {
        {"", ""},
        {"plain ä € \U0001F600", "plain ä € \U0001F600"},
        {"\xC4", "\uFFFD"},
        {"a\x80\x80z", "a\uFFFD\uFFFDz"},
        {"\xE2\x82", "\uFFFD\uFFFD"},                     // cut short
        {"\xC0\xAF", "\uFFFD\uFFFD"},                     // overlong
        {"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},           // overlong
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"}, // above U+10FFFF
        {"\xF0\x8F\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xFFx", "\uFFFDx"},
        {"\xE2\x82z", "\uFFFD\uFFFDz"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(toUtf8(c.text), c.utf8) << c.text;
}

TEST(TextEncoding, quotesForJson) {
    EXPECT_EQ(quoteForJson("a\"\\/\x1b\n\x7F\xC2\x9B\xC2\xA0\xC3\xA4"),
              "\"a\\\"\\\\/\\u001B\\u000A\\u007F\\u009B\xC2\xA0\xC3\xA4\"");
    EXPECT_EQ(quoteForJson(""), "\"\"");
}

TEST(TextEncoding, goesOnBehindWhatIsNoUtf8) {
    EXPECT_EQ(toUtf8("\xFFo\xC3\xA4 \xC3"), "\xEF\xBF\xBDo\xC3\xA4 \xEF\xBF\xBD");
    EXPECT_EQ(utf8Length(""), 0U);
}

TEST(TextEncoding, findsTheStartsOfCharacters) {
    const struct {
        std::string_view text;
        std::size_t at;
        std::size_t start;
    } cases[] = {
        {"", 0, 0},
        {"ab", 1, 1},
        {"ab", 2, 2},
        {"aä", 1, 1},
        {"aä", 2, 1},
        {"aä", 3, 3},
        {"a€", 3, 1},
        {"\U0001F600", 1, 0},
        {"\U0001F600", 3, 0},
        {"\U0001F600\x80", 4, 4}, // not UTF-8: one byte too many
        {"a\xE2\x82", 2, 2},      // one byte too few
        {"\x80\x80\x80\x80\x80\x80", 4, 4},
        {"\x80\x80", 1, 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(characterStart(c.text, c.at), c.start) << c.text << ' ' << c.at;
}

TEST(TextEncoding, truncatesBetweenCharacters) {
    const struct {
        std::string_view text;
        std::size_t length;
        std::string_view expected;
    } cases[] = {
        {"abcdef", 6, "abcdef"},
        {"abcdefg", 6, "abcdef..."},
        {"abcdeäg", 6, "abcde..."},
        {"abä", 4, "abä"},
        {"äb", 1, "..."},
        {"ab", 0, "..."},
        {"", 0, ""},
        {"\x80\x80\x80\x80\x80\x80\x80", 5, "\x80\x80\x80\x80\x80..."}, // not UTF-8
    };
    for (const auto& c : cases)
        EXPECT_EQ(truncated(c.text, c.length), c.expected) << c.text;
}

TEST(TextEncoding, escapesWhatATerminalWouldObey) {
    EXPECT_EQ(escapeForTerminal("a\x1b[0m\n\t\r\x7f"), "a\\x1B[0m\\n\\t\\r\\x7F");
    EXPECT_EQ(escapeForTerminal("ä \xC2\x9B"
                                "5m \xFF %s"),
              "ä \\xC2\\x9B5m \\xFF %s");
    EXPECT_EQ(escapeForTerminal(std::string_view("\0", 1)), "\\x00");
}

} // namespace vrn::test

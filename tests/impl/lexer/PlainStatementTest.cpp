// Which statements the scanner of plain statements recognises, and what it finds in them.
#include "impl/lexer/PlainStatement.h"

#include "tests/support/Reading.h"

namespace vrn::test {

using Kind = PlainStatement::Kind;

// What the scanner finds at the start of a text, which is followed by enough blanks.
static std::string found(const std::string& text) {
    const std::string padded = text + std::string(100, ' ');
    PlainScanner scanner(TextPlace{padded.data(), 1, TextPlace::lowerHalf(padded.data() - 1)},
                         padded.data() + padded.size());
    PlainStatement s;
    if (!scanner.scan(s))
        return "not plain";
    std::string what;
    const auto add = [&](std::string_view part) { what += (what.empty() ? "" : " ") + std::string(part); };
    if (s.comments.at != s.begin.at)
        add("comments");
    if (s.kind == Kind::Declaration) {
        add(s.isWith ? "declare and select" : "declare");
        add(s.word);
        add(s.node);
    } else {
        add(s.node.empty() ? "(current)" : s.node);
        add(s.name);
    }
    if (s.kind == Kind::Value) {
        add(attrTypeName(s.type));
        if (s.type == AttrType::String)
            add(s.word);
        else if (componentCount(s.type) == 0)
            add(std::to_string(s.integer));
        for (u32 i = 0; i < componentCount(s.type); ++i)
            add(String::format("%g", s.reals[i]).view());
        if (s.hasEscapes && s.type == AttrType::String)
            add("(escaped)");
    }
    if (s.kind == Kind::Connection)
        add("|= " + std::string(s.word) + "." + std::string(s.output));
    if (s.kind == Kind::Reference)
        add("-> " + std::string(s.word));
    if (s.kind == Kind::Connection || s.kind == Kind::Reference)
        add("at " + std::to_string(s.linkEnd.line) + "," + std::to_string(s.linkEnd.column));
    const TextPosition end = s.end.positionBefore();
    return what + " until " + std::to_string(end.line) + "," + std::to_string(end.column);
}

TEST(PlainStatement, isRecognised) {
    const struct {
        const char* text;
        const char* found;
    } cases[] = {
        {"light a1;", "declare light a1 until 1,9"},
        {" light\n a_1 :", "declare and select light a_1 until 2,6"},
        {"with a:", "declare and select with a until 1,7"},
        {"# one\n# two\r\nlight a;", "comments declare light a until 3,8"},
        {"a.x = 12;", "a x Int 12 until 1,9"},
        {".x=-12 ;", "(current) x Int -12 until 1,8"},
        {"a.x = 0012;", "a x Int 12 until 1,11"},
        {"a.x = 9223372036854775807;", "a x Int 9223372036854775807 until 1,26"},
        {"a.x\n=\t-0.5;", "a x Real -0.5 until 2,7"},
        {"a.x = 5.;", "a x Real 5 until 1,9"},
        {"a.x = true;", "a x Bool 1 until 1,11"},
        {"a.x = FALSE;", "a x Bool 0 until 1,12"},
        {"a.x = \"\";", "a x String  until 1,9"},
        {"a.x = \"it's; #a\";", "a x String it's; #a until 1,17"},
        {"a.x = \"a\\\"b\";", "a x String a\\\"b (escaped) until 1,13"},
        {"a.x = vec3(1 2.5 -3);", "a x Vec3 1 2.5 -3 until 1,21"},
        {"a.x = VEC2( 1,\n,2,);", "a x Vec2 1 2 until 2,5"},
        {"a.x = rgba(1 0 0);", "a x Rgba 1 0 0 1 until 1,18"},
        {"a.x = rgba(1 0 0 .5);", "a x Rgba 1 0 0 0.5 until 1,21"},
        {"a.x = mat3(1 2 3 4 5 6 7 8 9);", "a x Mat3 1 2 3 4 5 6 7 8 9 until 1,30"},
        {"a.x |= b.out;", "a x |= b.out at 1,12 until 1,13"},
        {"a.x |=\n\nb.out\n;", "a x |= b.out at 3,5 until 4,1"},
        {"a.x = b;", "a x -> b at 1,7 until 1,8"},
        {"a.x = vec3;", "a x -> vec3 at 1,10 until 1,11"},
        {"a_name_of_more_than_sixteen_letters.x = 1;", "a_name_of_more_than_sixteen_letters x Int 1 until 1,42"},
        {"removes a;", "declare removes a until 1,10"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(found(each.text), each.found) << each.text;
}

TEST(PlainStatement, isRefusedIfInDoubt) {
    const char* const texts[] = {
        "",
        ";",
        "# a comment",
        "# a comment\xC3\xA4\na b;",
        "remove a;",
        "define a;",
        "DEFINE a;",
        "true a;",
        "a null;",
        "a b",
        "a.b.c = 1;",
        "a.b[0] = 1;",
        "a .b = 1;",
        "a. b = 1;",
        "a.true = 1;",
        "null.a = 1;",
        "a.x = 1u;",
        "a.x = 0x10;",
        "a.x = 1e5;",
        "a.x = 1.5e5;",
        "a.x = .5;",
        "a.x = -.5;",
        "a.x = -;",
        "a.x = \xFF",
        "a.x = 9223372036854775808;",
        "a.x = 99999999999999999999;",
        "a.x = 1.00000000000000000001;",
        "a.x = 1 2;",
        "a.x = null;",
        "a.x |= null;",
        "a.x |= .out;",
        "a.x |= b;",
        "a.x |= b.c.d;",
        "a.x | = b.out;",
        "a.x = {};",
        "a.x = [];",
        "a.x = float[1] {1};",
        "a.x = vec3 (1 2 3);",
        "a.x = vec3(1 2);",
        "a.x = vec3(1 2 3 4);",
        "a.x = vec3(1 (2) 3);",
        "a.x = vec3(1 2 1e5);",
        "a.x = vec3(1-2 3);",
        "a.x = vec3(1 2 3",
        "a.x = vec5(1 2 3);",
        "a.x = rgba(1 2);",
        "a.x = \"a\nb\";",
        "a.x = \"a\\\nb\";",
        "a.x = \"\xC3\xA4\";",
        "a.x = \"abc",
        "a.x = \"abc\" 1;",
        "\xC3\xA4 a b;",
        "a\xFF b;",
    };
    for (const char* text : texts)
        EXPECT_EQ(found(text), "not plain") << text;
}

// The window ends at every place in a statement: the scanner reads nothing after it, which the address sanitizer
// checks, and recognises the statement only if a step can read nothing beyond it.
TEST(PlainStatement, isRefusedAtTheEndOfTheWindow) {
    const std::string texts[] = {"light a:",
                                 "a.x = -12.25;",
                                 "a.x = \"some \\\"text\";",
                                 "a.x |= b.out;",
                                 "# c\na.x = b;",
                                 "a.x = mat3(1 2 3 4 5 6 7 8 9.00001);",
                                 "a_rather_long_name_of_a_node.x = true;"};
    for (const std::string& text : texts) {
        int recognised = 0;
        for (std::size_t size = 0; size <= text.size() + 100; ++size) {
            std::string cut = text + std::string(100, ' ');
            const std::vector<char> window(cut.begin(), cut.begin() + static_cast<std::ptrdiff_t>(size));
            PlainScanner scanner(TextPlace{window.data(), 1, 0}, window.data() + window.size());
            PlainStatement statement;
            recognised += scanner.scan(statement) ? 1 : 0;
            PlainScanner ahead(TextPlace{window.data(), 1, 0}, window.data() + window.size());
            (void)ahead.areTokensAhead();
            // A long word that begins just before the limit.
            std::vector<char> word = window;
            word.insert(word.end(), 67, 'w');
            PlainScanner beyond(TextPlace{word.data(), 1, 0}, word.data() + word.size());
            (void)beyond.areTokensAhead();
        }
        EXPECT_GT(recognised, 0) << text;
        EXPECT_LE(recognised, 40) << text;
    }
}

TEST(PlainStatement, knowsValidTokensAhead) {
    const struct {
        const char* text;
        bool areValid;
    } cases[] = {
        {"a.b", true},         {"a . 1 ?", true},      {"# comment\n;;", true}, {"; - 1e5", true}, {"\n\na b c", true},
        {"a.?", false},        {"a. \"x\"", false},    {"a.\xC3\xA4", false},   {"a.(1)", false},  {"", false},
        {"# a\n# b\nc", true}, {"# \xFF\na b", false}, {"a b \xFF", false},
    };
    for (const auto& [text, areValid] : cases) {
        const std::string padded = text + std::string(100, ' ');
        PlainScanner scanner(TextPlace{padded.data(), 1, 0}, padded.data() + padded.size());
        EXPECT_EQ(scanner.areTokensAhead(), areValid) << text;
    }
}

// Lines and columns are 32-bit numbers that wrap around.
TEST(PlainStatement, hasPositionsThatWrap) {
    const std::string text = "a.x = b;\n" + std::string(100, ' ');
    const TextPlace begin{text.data(), 0x7FFFFFFF, TextPlace::lowerHalf(text.data()) - 0x7FFFFFFF};
    PlainScanner scanner(begin, text.data() + text.size());
    PlainStatement statement;
    ASSERT_TRUE(scanner.scan(statement));
    EXPECT_EQ(statement.begin.positionOf(statement.begin.at), (TextPosition{0x7FFFFFFF, 0x7FFFFFFF}));
    EXPECT_EQ(statement.linkEnd, (TextPosition{0x7FFFFFFF, static_cast<i32>(0x7FFFFFFFU + 6)}));
    scanner.blanks();
    EXPECT_EQ(scanner.place().line, 0x80000000U);
}

} // namespace vrn::test

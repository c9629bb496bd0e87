#include "impl/Formatter.h"

#include "tests/support/Reading.h"
#include "tests/support/SameScene.h"
#include "tests/support/Texts.h"

namespace vrn::test {

namespace {

std::string formatted(const std::string& text, u32 column = 100) {
    std::string result;
    formatVrn(String(std::string_view(text)), {.column = column}, [&](std::string_view piece) { result += piece; });
    return result;
}

struct Case {
    std::string text;
    std::string result;
};

void expectAll(std::initializer_list<Case> cases, u32 column = 100) {
    for (const Case& c : cases) {
        EXPECT_EQ(formatted(c.text, column), c.result) << c.text;
        EXPECT_EQ(formatted(c.result, column), c.result) << c.text;
    }
}

} // namespace

TEST(Formatter, putsEachStatementOnALine) {
    expectAll({
        {"", ""},
        {" \n\t", ""},
        {"a b;c d  ;\te f:", "a b;\nc d;\ne f:\n"},
        {"a . x [ 1 ] [*] . y=1;", "a.x[ 1 ][*].y = 1;\n"},
        {"a.x=vec3 ( 1,2 , 3 );", "a.x = vec3(1 2 3);\n"},
        {"a.x = FLOAT [2]{1 ,2};", "a.x = FLOAT[2] {1 2};\n"},
        {"a.x|=b . y;a.x | = NULL;", "a.x |= b.y;\na.x |= NULL;\n"},
        {"a.x=TRUE;a.y=+1.50e0 ;a.z = \"a  \\\"b\";", "a.x = TRUE;\na.y = + 1.50e0;\na.z = \"a  \\\"b\";\n"},
        {"a.x = mat3((1,0,0),(0,1,0),(0,0,1));", "a.x = mat3(1 0 0 0 1 0 0 0 1);\n"},
        {"a.s = \"two\r\nlines\";", "a.s = \"two\r\nlines\";\n"},
        {"\xEF\xBB\xBF a b;", "\xEF\xBB\xBF"
                              "a b;\n"},
    });
}

TEST(Formatter, indentsTheStatementsOfTheCurrentNode) {
    expectAll({{"a b:.x=1;.y=2;c.z=3;\n.w=4;", "a b:\n    .x = 1;\n    .y = 2;\nc.z = 3;\n    .w = 4;\n"}});
}

TEST(Formatter, keepsOneBlankLine) {
    expectAll({{"\n\n a b;\n\n\n\nc d;\ne f;\r\n\r\ng h;\n\n\n", "a b;\n\nc d;\ne f;\n\ng h;\n"}});
}

TEST(Formatter, separatesTokensThatWouldMerge) {
    expectAll({
        {"1 .5 a .b", "1 . 5 a.b\n"},
        {"a 1 b - 2 c", "a 1 b - 2 c\n"},
        {"true false null . x", "true false null .x\n"},
        {"\"a\" \"b\" [1] (2) {3}", "\"a\" \"b\" [1] (2) {3}\n"},
        {"a = . b", "a = .b\n"},
    });
}

TEST(Formatter, keepsCommentsInPlace) {
    expectAll({
        {"#a\n # b \na b; # c\n# d", "#a\n# b \na b;  # c\n# d\n"},
        {"a b:# c\n# d\n.x = 1;#e\n", "a b:  # c\n    # d\n    .x = 1;  #e\n"},
        {"a b; #1\na.long = 2; #2\na.x = 3;\na.y = 4; #3\n\na.zzz = 5; #4",
         "a b;         #1\na.long = 2;  #2\na.x = 3;\na.y = 4;  #3\n\na.zzz = 5;  #4\n"},
        // A comment directly after a statement, with a blank line before the next one, belongs to the former.
        {"a b:\n.x = 1;\n# of x\n\n# of c\nc d;", "a b:\n    .x = 1;\n    # of x\n\n# of c\nc d;\n"},
        {"a b:\n.x = 1;\n# of c\nc d;", "a b:\n    .x = 1;\n# of c\nc d;\n"},
        {"a b:\n.x = 1;\n# of x", "a b:\n    .x = 1;\n    # of x\n"},
        {"a b:\n.x = 1;\n\n# at the end", "a b:\n    .x = 1;\n\n# at the end\n"},
        {"# ends with a return\ra b;", "# ends with a return\na b;\n"},
        {"\n\n# c\n\n.a = 5;", "# c\n\n    .a = 5;\n"},
        // A comment inside a statement is an error to the reader, but the formatter keeps it.
        {"a.x = # no\n 1;", "a.x = # no\n1;\n"},
    });
}

// A long line does not move the comments of other lines.
TEST(Formatter, doesNotAlignCommentsOfLongLines) {
    const std::string text(150, 'x');
    expectAll(
        {{"a.s = \"" + text + "\"; # long\na.b = 1; # short", "a.s = \"" + text + "\";  # long\na.b = 1;  # short\n"}});
    std::string lines = "a.s = \"" + std::string(100000, 'x') + "\"; # long\n";
    for (int i = 0; i < 3000; ++i)
        lines += "a.b = 1; # c\n";
    EXPECT_LT(formatted(lines).size(), lines.size() + 5000);
}

TEST(Formatter, wrapsListsAtWholeElements) {
    expectAll(
        {
            {"n.x = vec3f[3] {1 2 3 4 5 6 7 8 99999};", "n.x = vec3f[3] {\n    1 2 3 4 5 6\n    7 8 99999\n};\n"},
            {"n.x = int32[12] {1 2 3 4 5 6 7 8 9 10 11 12};",
             "n.x = int32[12] {\n    1 2 3 4 5 6 7 8 9\n    10 11 12\n};\n"},
            {"n.x = mat3(1 0 0 0 1 0 0 0 1000);", "n.x = mat3(\n    1 0 0 0 1 0\n    0 0 1000\n);\n"},
            {"t a:\n.xxxxxx = {1 2 3 4 5 6};", "t a:\n    .xxxxxx = {\n        1 2 3 4 5 6\n    };\n"},
            {"n.x = byte[9] {.0123456789ABCDEF01234};", "n.x = byte[9] {\n    .0123456789ABCDEF01234\n};\n"},
            {"n.x = byte[9] {.0123 456789AB CDEF 01234};", "n.x = byte[9] {\n    .0123 456789AB CDEF\n    01234\n};\n"},
            {"n.x = float[3] {1 2 3};", "n.x = float[3] {1 2 3};\n"},                                  // just fits
            {"n.vec3f = {11 12 13 1 1 1 1 1 1};", "n.vec3f = {\n    11 12 13 1 1 1 1 1\n    1\n};\n"}, // no type
            {"n.x = unknown[3] {1 2 3 };", "n.x = unknown[3] {\n    1 2 3\n};\n"},
            {"n.x = vec3f[3] {};", "n.x = vec3f[3] {};\n"},
        },
        23);
    expectAll({{"n.x = vec3f[3] {1 2 3 4 5 6 7 8 9};", "n.x = vec3f[3] {1 2 3 4 5 6 7 8 9};\n"}}, 0);
}

// The last column may be used.
TEST(Formatter, wrapsBeyondTheColumn) {
    const auto someNumbers = [](std::size_t count) {
        std::string text = "1";
        for (; count > 1; --count)
            text += " 2";
        return text;
    };
    for (const u32 column : {100U, 37U, 80U}) {
        // `n.x = {` and `};` take nine characters.
        const std::string numbers = someNumbers((column - 8) / 2);
        const std::string padding(column - 9 - numbers.size(), '0');
        const std::string fits = "n.x = {" + numbers + padding + "};\n";
        ASSERT_EQ(fits.size() - 1, column);
        EXPECT_EQ(formatted(fits, column), fits);
        const std::string tooLong = "n.x = {" + numbers + padding + "0};\n";
        EXPECT_EQ(formatted(tooLong, column), "n.x = {\n    " + numbers + padding + "0\n};\n");
        // The same for a line of elements: four characters of indentation, then as many as fit.
        const std::string line = someNumbers((column - 3) / 2) + std::string((column - 5) % 2, '0');
        ASSERT_EQ(4 + line.size(), column);
        EXPECT_EQ(formatted("n.x = {" + line + " 3};", column), "n.x = {\n    " + line + "\n    3\n};\n");
        EXPECT_EQ(formatted("n.x = {" + line + "0 3};", column), "n.x = {\n    " + line.substr(0, line.rfind(' ')) +
                                                                     "\n    " + line.substr(line.rfind(' ') + 1) +
                                                                     "0 3\n};\n");
        // The same for an indented statement.
        const std::string inner = ".x = {" + std::string(column - 12, '1');
        EXPECT_EQ(formatted("t n:\n" + inner + "};", column), "t n:\n    " + inner + "};\n");
        EXPECT_EQ(formatted("t n:\n" + inner + "1};", column),
                  "t n:\n    .x = {\n        1" + inner.substr(6) + "\n    };\n");
    }
    // Comments are aligned with the longest line that does not exceed the column.
    for (const std::size_t length : {100U, 101U}) {
        const std::string line = "a.s = \"" + std::string(length - 9, 'x') + "\";";
        ASSERT_EQ(line.size(), length);
        EXPECT_EQ(formatted(line + " # c\na.b = 1; # d\n"),
                  line + "  # c\na.b = 1;" + std::string(length == 100 ? 94 : 2, ' ') + "# d\n");
    }
}

// The text of the token then ends with a blank, which a message may contain.
TEST(Formatter, keepsASeparatorAfterTheLastElement) {
    expectAll({{"a.x = {1, 2, };", "a.x = {1 2, };\n"}, {"a.x = {1 2 };", "a.x = {1 2};\n"}});
    expectAll({{"a.x = int32[2] {1000000, 2,\n};", "a.x = int32[2] {\n    1000000 2,\n};\n"}}, 20);
}

TEST(Formatter, refusesWhatItWouldLose) {
    const struct {
        std::string text;
        const char* message;
        TextPosition position;
    } cases[] = {
        {"t a;\na.x = ?;", "INVALID TOKEN (2,6): '?'", {2, 6}},
        {"a.x = (1 x);", "INVALID PAREN LIST TOKEN (1,9): 'x'", {1, 9}},
        {"a.x = \"abc", "UNEXPECTED EOF while parsing STRING", {1, 10}},
        {"a.x = {1 2", "UNEXPECTED EOF while parsing BRACES", {1, 10}},
        {"t a;\n\xC3\xA4 b;", "bytes outside ASCII between tokens are taken for blanks: 2 in all", {2, 1}},
        {"a.x = {1\xC2\xA0\n2};", "bytes outside ASCII between tokens are taken for blanks: 2 in all", {2, 2}},
        {"t a; \xFF t b;", "a byte 0xFF ends the text; nothing behind it is read", {1, 6}},
    };
    for (const auto& c : cases) {
        try {
            ADD_FAILURE() << formatted(c.text);
        } catch (const FormatError& error) {
            EXPECT_STREQ(error.what(), c.message);
            EXPECT_EQ(error.position(), c.position) << c.text;
        }
    }
}

TEST(Formatter, keepsTheScenesOfAllTexts) {
    std::size_t count = 0;
    for (const std::filesystem::path& path : allTexts()) {
        const std::string text = contentOf(path);
        std::string once;
        try {
            once = formatted(text);
        } catch (const FormatError&) {
            continue;
        }
        ++count;
        EXPECT_EQ(formatted(once), once) << path;
        const Reading before = readText(String(std::string_view(text)));
        const Reading after = readText(String(std::string_view(once)));
        EXPECT_EQ(firstDifference(*before.scene, *after.scene), "") << path;
        EXPECT_EQ(before.isOk, after.isOk) << path;
    }
    EXPECT_GE(count, 50U);
}

} // namespace vrn::test

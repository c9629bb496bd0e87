#include "impl/lexer/FileLexer.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"
#include "tests/support/Sources.h"

#include <random>

namespace vrn::test {

using Type = Token::Type;

struct Expected {
    Type type;
    std::string text;
    i32 line;
    i32 column;
};

static void expectTokens(Lexer& lexer, const std::vector<Expected>& expected, const char* from) {
    for (const Expected& e : expected) {
        const Token token = lexer.nextToken();
        EXPECT_EQ(static_cast<int>(token.type), static_cast<int>(e.type)) << from;
        EXPECT_EQ(token.text, std::string_view(e.text)) << from;
        EXPECT_EQ(token.line, e.line) << from << " at " << e.text;
        EXPECT_EQ(token.column, e.column) << from << " at " << e.text;
    }
}

TEST(Lexer, splitsTextsIntoTokens) {
    const struct {
        const char* text;
        std::vector<Expected> tokens;
    } cases[] = {
        {"", {{Type::Eof, "EOF", 1, 1}, {Type::Eof, "EOF", 1, 1}}},
        {"a\nb", {{Type::Id, "a", 1, 1}, {Type::Id, "b", 2, 1}, {Type::Eof, "EOF", 2, 1}}},
        {"a\r\nb", {{Type::Id, "a", 1, 1}, {Type::Id, "b", 2, 1}}},
        {"\ta", {{Type::Id, "a", 1, 2}}},
        {"'*+,./:;=\\|",
         {{Type::Quote, "'", 1, 1},
          {Type::Star, "*", 1, 2},
          {Type::Plus, "+", 1, 3},
          {Type::Comma, ",", 1, 4},
          {Type::Dot, ".", 1, 5},
          {Type::Slash, "/", 1, 6},
          {Type::Colon, ":", 1, 7},
          {Type::Semicolon, ";", 1, 8},
          {Type::Equals, "=", 1, 9},
          {Type::Backslash, "\\", 1, 10},
          {Type::Pipe, "|", 1, 11}}},
        {"#", {{Type::Comment, "#", 1, 1}, {Type::Eof, "EOF", 1, 1}}},
        {"# a \x01;\r\n#b", {{Type::Comment, "# a \x01;", 1, 6}, {Type::Comment, "#b", 2, 2}}},
        {"True NULL FaLsE true1 null_x _a9",
         {{Type::True, "true", 1, 4},
          {Type::Null, "null", 1, 9},
          {Type::False, "false", 1, 15},
          {Type::Id, "true1", 1, 21},
          {Type::Id, "null_x", 1, 28},
          {Type::Id, "_a9", 1, 32}}},
        {"abc fade", {{Type::Id, "abc", 1, 3}, {Type::Id, "fade", 1, 8}}},
        {"- 5", {{Type::Int, "-", 1, 1}, {Type::Int, "5", 1, 3}}},
        {".5", {{Type::Dot, ".", 1, 1}, {Type::Int, "5", 1, 2}}},
        {"+5", {{Type::Plus, "+", 1, 1}, {Type::Int, "5", 1, 2}}},
        {"1e5 10u 1-2 7U -inf -nan 1f 2. 1.5e+3 0xFF",
         {{Type::Int, "1e5", 1, 3},
          {Type::Int, "10u", 1, 7},
          {Type::Int, "1-2", 1, 11},
          {Type::Int, "7U", 1, 14},
          {Type::Real, "-inf", 1, 19},
          {Type::Real, "-nan", 1, 24},
          {Type::Real, "1f", 1, 27},
          {Type::Real, "2.", 1, 30},
          {Type::Real, "1.5e+3", 1, 37},
          {Type::Int, "0", 1, 39},
          {Type::Id, "xFF", 1, 42}}},
        {"1A 2N 3i 4F 5E",
         {{Type::Real, "1A", 1, 2},
          {Type::Real, "2N", 1, 5},
          {Type::Real, "3i", 1, 8},
          {Type::Real, "4F", 1, 11},
          {Type::Int, "5E", 1, 14}}},
        {R"("" "a\"b" "a\\" "\\\"" "x)",
         {{Type::String, R"("")", 1, 2},
          {Type::String, R"("a\"b")", 1, 9},
          {Type::String, R"("a\\")", 1, 15},
          {Type::String, R"("\\\"")", 1, 22},
          {Type::Eof, "UNEXPECTED EOF while parsing STRING", 1, 25}}},
        {R"("a\"" "\"")", {{Type::String, R"("a\"")", 1, 5}, {Type::String, R"("\"")", 1, 10}}},
        {R"("a\\\\b\\")", {{Type::String, R"("a\\\\b\\")", 1, 10}}},
        {"\"a\nb\"", {{Type::String, "\"a\nb\"", 2, 2}}},
        {"( 1 , 2 ) (1,2) (1 2) ()",
         {{Type::Parens, "(1 2)", 1, 9},
          {Type::Parens, "(1 2)", 1, 15},
          {Type::Parens, "(1 2)", 1, 21},
          {Type::Parens, "()", 1, 24}}},
        {"{1, 2,, 3}", {{Type::Braces, "{1 2 3}", 1, 10}}},
        {"((1,2),(3,4))", {{Type::Parens, "(1 2 3 4)", 1, 13}}},
        {"(1 (2 3))", {{Type::Parens, "(1 2 3)", 1, 9}}},
        {"((1)(2))", {{Type::Parens, "(12)", 1, 8}}}, // inner brackets do not separate
        {"{(1 2) [3 4]}", {{Type::Braces, "{1 2 3 4}", 1, 13}}},
        {"{ \t\n1\n\n2\x80\x7F 3 }", {{Type::Braces, "{1 2 3}", 4, 7}}},
        {"{ .78 9c }", {{Type::Braces, "{.78 9c}", 1, 10}}},
        {"(1 x)", {{Type::Invalid, "INVALID PAREN LIST TOKEN (1,3): 'x'", 1, 3}}},
        {"{1;}", {{Type::Invalid, "INVALID BRACE LIST TOKEN (1,2): ';'", 1, 2}}},
        {"[3] [*] [ 2 ] [] [1 2] [[3]",
         {{Type::Brackets, "[3]", 1, 3},
          {Type::Brackets, "[*]", 1, 7},
          {Type::Brackets, "[ 2 ]", 1, 13},
          {Type::Brackets, "[]", 1, 16},
          {Type::Brackets, "[1 2]", 1, 22},
          {Type::Brackets, "[[3]", 1, 27}}},
        {"[a]", {{Type::Invalid, "INVALID BRACKET LIST TOKEN (1,1): 'a'", 1, 1}}},
        {"[-1]", {{Type::Invalid, "INVALID BRACKET LIST TOKEN (1,1): '-'", 1, 1}}},
        {"(1 2", {{Type::Eof, "UNEXPECTED EOF while parsing PARENS", 1, 4}}},
        {"{1 2", {{Type::Eof, "UNEXPECTED EOF while parsing BRACES", 1, 4}}},
        {"{(1}", {{Type::Braces, "{1}", 1, 4}}}, // only its own kind of bracket nests
        {"{{1}", {{Type::Eof, "UNEXPECTED EOF while parsing BRACES", 1, 4}}},
        {"((1)", {{Type::Eof, "UNEXPECTED EOF while parsing PARENS", 1, 4}}},
        {"[1", {{Type::Eof, "UNEXPECTED EOF while parsing BRACKETS", 1, 2}}},
        {"(1 \n ", {{Type::Eof, "UNEXPECTED EOF while parsing PARENS", 2, 1}}},
        {"x = ?",
         {{Type::Id, "x", 1, 1}, {Type::Equals, "=", 1, 3}, {Type::Invalid, "INVALID TOKEN (1,4): '?'", 1, 4}}},
        {"\xEF\xBB\xBFx", {{Type::Id, "x", 1, 4}}}, // a byte-order mark is blank
        {"a\x01\x02\x7F"
         "b",
         {{Type::Id, "a", 1, 1}, {Type::Id, "b", 1, 5}}},
        {"a \xFF b", {{Type::Id, "a", 1, 1}, {Type::Eof, "EOF", 1, 2}, {Type::Eof, "EOF", 1, 2}}},
    };
    for (const auto& c : cases) {
        StringLexer fromString{String(c.text)};
        expectTokens(fromString, c.tokens, c.text);
        if (*c.text == '\0')
            continue; // an empty text holds its terminator as a blank; an empty file holds nothing
        FileLexer fromFile{File::fromMemory(c.text)};
        expectTokens(fromFile, c.tokens, c.text);
    }
}

TEST(Lexer, refusesCharactersThatStartNoToken) {
    for (const char c : std::string_view(")}]!?<>$%&^~`@")) {
        StringLexer lexer{String(c)};
        const Token token = lexer.nextToken();
        EXPECT_EQ(static_cast<int>(token.type), static_cast<int>(Type::Invalid)) << c;
        EXPECT_EQ(token.text, String::format("INVALID TOKEN (1,0): '%c'", c));
    }
}

namespace {

std::string tokensOf(Lexer& lexer) {
    std::string all;
    for (Token token;;) {
        token = lexer.nextToken();
        all += String::format("%d (%d,%d) ", static_cast<int>(token.type), token.line, token.column);
        all += token.text;
        all += '\n';
        if (token.type <= Type::Invalid)
            return all;
    }
}

void expectTheSameTokensFromAllSources(const std::string& text) {
    ReferenceLexer plain(text);
    const std::string expected = tokensOf(plain);
    StringLexer fromString{String(std::string_view(text))};
    if (!text.empty()) { // the terminator of an empty text is a character
        ASSERT_EQ(tokensOf(fromString), expected) << text;
    }
    for (const std::size_t size : {1U, 2U, 3U, 7U, 16U, 64U, 1000U}) {
        FileLexer fromFile{File::fromSource(std::make_unique<Blocks>(text, size), size)};
        ASSERT_EQ(tokensOf(fromFile), expected) << size << ": " << text;
    }
}

} // namespace

TEST(Lexer, returnsTheSameTokensFromAllSources) {
    const std::string pieces[] = {"a",
                                  "true",
                                  "_x9",
                                  "12",
                                  "-1.5",
                                  "1e-5",
                                  "0.25 ",
                                  " ",
                                  "\t",
                                  "\n",
                                  "\r\n",
                                  "\n\n",
                                  "#",
                                  "# c",
                                  "\"",
                                  "\\",
                                  "\\\"",
                                  "\"s\"",
                                  "(",
                                  ")",
                                  "{",
                                  "}",
                                  "[",
                                  "]",
                                  "[3]",
                                  ",",
                                  ".",
                                  ";",
                                  ":",
                                  "=",
                                  "|",
                                  "\x01",
                                  "\x80",
                                  "\xC3\xA4",
                                  "{1 2}",
                                  "((1),(2))",
                                  "(1, 2)",
                                  "float[2] {1 2}",
                                  "?",
                                  "\xFF",
                                  "0.123456 7.5 -8 9 ",
                                  "1234567890123456 "};
    std::mt19937 random(7);
    for (int i = 0; i < scaled(20000); ++i) {
        std::string text;
        const std::size_t count = random() % 30;
        for (std::size_t n = 0; n < count; ++n)
            text += pieces[random() % std::size(pieces)];
        expectTheSameTokensFromAllSources(text);
    }
}

TEST(Lexer, returnsTheSameLongListsFromAllSources) {
    std::mt19937 random(8);
    for (int i = 0; i < scaled(300); ++i) {
        std::string text = "x = float[1]{";
        const char* separators[] = {" ", "  ", "\n\t", ",", ", ", "\r\n", " (", ") ", " [", "]", "\x80", " {", "} "};
        const std::size_t kinds = i % 3 == 0 ? std::size(separators) : 6;
        for (int n = 0; n < 200; ++n)
            text += std::to_string(static_cast<int>(random() % 2000) - 1000) + separators[random() % kinds];
        text += random() % 8 == 0 ? "?" : "";
        text += "}}}};\nlast";
        text.erase(text.size() - random() % 3);
        expectTheSameTokensFromAllSources(text);
    }
}

TEST(Lexer, flattensListsLikeTheReference) {
    const std::string_view characters = "0123456789-.+eE()(){}{}[],,    \n\t\r\x01\x80nu";
    std::mt19937 random(9);
    for (int i = 0; i < scaled(50000); ++i) {
        std::string text = random() % 2 ? "(" : "{";
        const std::size_t length = random() % (i % 10 == 0 ? 600 : 40);
        for (std::size_t n = 0; n < length; ++n)
            text += random() % 200 == 0 ? 'x' : characters[random() % (random() % 4 ? 14 : characters.size())];
        text += text[0] == '(' ? "))" : "}}";
        StringLexer lexer{String(std::string_view(text))};
        ReferenceLexer reference(text);
        ASSERT_EQ(tokensOf(lexer), tokensOf(reference)) << text;
    }
}

namespace {

// With the members that derived classes see. Its windows are of one character.
class OpenLexer final : public Lexer {
public:
    explicit OpenLexer(std::string_view text) : text_(text) { start(); }
    using Lexer::brackets;
    using Lexer::column;
    using Lexer::cur;
    using Lexer::id;
    using Lexer::line;
    using Lexer::number;
    using Lexer::pos;
    using Lexer::prev;

private:
    Window refill(std::string_view rest) override {
        const std::size_t from = rest.empty() ? at_ : static_cast<std::size_t>(rest.data() - text_.data());
        at_ = std::min(at_ + 1, text_.size());
        return {text_.substr(from, at_ - from)};
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

} // namespace

TEST(Lexer, tracksThePositionOfEachCharacter) {
    OpenLexer lexer("a\r\nb");
    EXPECT_EQ(lexer.prev, 0);
    EXPECT_EQ(lexer.cur, 'a');
    EXPECT_EQ(lexer.pos, 0);
    EXPECT_EQ(lexer.line, 1);
    EXPECT_EQ(lexer.column, 0);
    const i32 positions[][2] = {{1, 1}, {1, 2}, {1, 3}, {2, 1}};
    const char* characters = "a\r\nb";
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(lexer.consume(), characters[i]);
        EXPECT_EQ(lexer.line, positions[i][0]);
        EXPECT_EQ(lexer.column, positions[i][1]);
        EXPECT_EQ(lexer.pos, i + 1);
    }
    EXPECT_EQ(lexer.cur, endOfText);
    EXPECT_EQ(lexer.consume(), static_cast<char>(endOfText)) << "the end may be consumed again and again";
    EXPECT_EQ(lexer.cur, endOfText);
}

TEST(Lexer, reportsTheEndWhereATokenShouldBegin) {
    EXPECT_EQ(OpenLexer("").id().text, "UNEXPECTED EOF while parsing ID");
    EXPECT_EQ(OpenLexer("").number().text, "UNEXPECTED EOF while parsing NUMBER");
    EXPECT_EQ(OpenLexer("").brackets().text, "UNEXPECTED EOF while parsing BRACKETS");
}

TEST(Lexer, wrapsItsPositionAroundBeyondTwoGiB) {
    OpenLexer lexer("ab\nc");
    lexer.pos = INT32_MAX;
    lexer.column = INT32_MAX;
    lexer.line = INT32_MAX;
    lexer.consume();
    EXPECT_EQ(lexer.pos, INT32_MIN);
    EXPECT_EQ(lexer.column, INT32_MIN);
    lexer.consume();
    lexer.consume();
    lexer.consume();
    EXPECT_EQ(lexer.line, INT32_MIN);
    EXPECT_EQ(lexer.column, 1);
}

TEST(FileLexer, leavesTheFileAfterTheCurrentCharacter) {
    for (const std::size_t size : {1U, 4U, 100U}) {
        const std::string text = "ab cd;ef";
        File file = File::fromSource(std::make_unique<Blocks>(text, size), size);
        {
            FileLexer lexer(file);
            EXPECT_EQ(lexer.nextToken().text, "ab");
            EXPECT_EQ(lexer.nextToken().text, "cd");
        }
        char c = 0;
        EXPECT_TRUE(file.read(c));
        EXPECT_EQ(c, 'e') << "the semicolon has been read as the current character";
    }
}

TEST(FileLexer, findsNothingInAFileAtItsEnd) {
    FileLexer lexer{File::fromMemory("")};
    EXPECT_EQ(lexer.nextToken().text, "EOF");
    EXPECT_EQ(lexer.consume(), static_cast<char>(endOfText));
}

} // namespace vrn::test

// Keywords, the ends of words, and the lifetime of the texts of tokens.
#include "impl/lexer/Word.h"

#include "impl/lexer/FileLexer.h"
#include "impl/lexer/StringLexer.h"
#include "scene/syntax/Keyword.h"
#include "tests/support/Sources.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace vrn::test {

TEST(Keyword, isNotCaseSensitiveAndHasAtMostEightCharacters) {
    const char* words[] = {"a",  "b",    "ab",    "ba",    "abc",    "abd",    "vec2",   "vec3",
                           "v3", "with", "float", "flost", "define", "remove", "uint16", "colorref"};
    for (const std::string_view a : words)
        for (const std::string_view b : words)
            EXPECT_EQ(keywordNumber(a) == keywordNumber(b), a == b) << a << " " << b;
    EXPECT_EQ(keywordNumber("ReMoVe"), keywordNumber("remove"));
    EXPECT_EQ(keywordNumber("VEC3"), keywordNumber("vec3"));
    EXPECT_EQ(keywordNumber("ninechars"), 0U);
    EXPECT_EQ(keywordNumber(""), 0U);
    static_assert(keywordNumber("colorref") == 0x66657272'6f6c6f63);
    const std::string atRunTime = "ColorRef";
    EXPECT_EQ(keywordNumber(atRunTime), keywordNumber("colorref"));
}

TEST(Word, isComparedWithoutWhatFollowsIt) {
    for (std::size_t length = 0; length < 20; ++length) {
        const std::string word(length, 'w');
        const std::string a = word + std::string(20, '1');
        std::string b = word + std::string(20, '2');
        const auto isSame = [&](std::size_t size) {
            return isSameWord(std::string_view(a).substr(0, size), std::string_view(b).substr(0, size));
        };
        EXPECT_TRUE(isSame(length));
        EXPECT_FALSE(isSame(length + 1));
        EXPECT_FALSE(isSameWord(word, std::string_view(b).substr(0, length + 1)));
        if (length == 0)
            continue;
        b[length / 2] = 'x';
        EXPECT_FALSE(isSame(length));
    }
}

TEST(Word, ofAStringIsPlainUpToWhatIsNot) {
    for (int c = 0; c < 256; ++c)
        for (std::size_t at = 0; at < 16; ++at) {
            std::string text(16, 'a');
            text[at] = static_cast<char>(c);
            const bool isPlain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
            EXPECT_EQ(plainTextLength(text.data()), isPlain ? 16 : at) << c;
        }
}

TEST(Word, endsAfterItsLastCharacter) {
    const std::string rest = " 0123456789012345";
    for (int c = 0; c < 256; ++c) {
        const char first = static_cast<char>(c);
        const std::string text = first + rest;
        const char* end = wordEnd(text.data(), text.data() + text.size());
        const bool isWord = String::isLetter(first) || String::isDigit(first) ||
                            std::string_view("_-'*+,./:;=\\|").find(first) != std::string_view::npos;
        EXPECT_EQ(end - text.data(), isWord ? 1 : 0) << c;
    }
    for (std::size_t length = 1; length < 40; ++length) {
        const std::string name = std::string(length, 'x') + rest;
        EXPECT_EQ(wordEnd(name.data(), name.data() + name.size()), name.data() + length);
        const std::string number = "-" + std::string(length, '7') + "x" + rest;
        EXPECT_EQ(wordEnd(number.data(), number.data() + number.size()), number.data() + length + 1);
    }
}

TEST(Lexer, keepsTheTextsOfTokensForFourStatements) {
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += "name" + std::to_string(i) + " ";
    for (const std::size_t size : {1U, 10U, 100000U}) {
        FileLexer lexer{File::fromSource(std::make_unique<Blocks>(text, size), size)};
        std::vector<Token> tokens;
        for (int i = 0; i < 3000; ++i) {
            lexer.startStatement();
            tokens.push_back(lexer.nextToken());
            for (int k = std::max(0, i - 3); k <= i; ++k)
                ASSERT_EQ(tokens[static_cast<std::size_t>(k)].text, "name" + std::to_string(k))
                    << "block size " << size;
        }
    }
    // A statement of many tokens, one of which is long.
    const std::string statement = text + std::string(5000, 'x') + " " + text;
    FileLexer lexer{File::fromMemory(String(std::string_view(statement)))};
    std::vector<Token> tokens;
    for (int i = 0; i < 6001; ++i)
        tokens.push_back(lexer.nextToken());
    EXPECT_EQ(tokens[7].text, "name7");
    EXPECT_EQ(tokens[3000].text.size(), 5000U);
    EXPECT_EQ(tokens[6000].text, "name2999");
}

TEST(Lexer, reusesTheMemoryOfTexts) {
    // If the memory grew from statement to statement, it would soon be exhausted.
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "# " + std::string(1100, 'x') + "\n";
    FileLexer fromFile{File::fromMemory(String(std::string_view(text)))};
    for (int i = 0; i < 1000; ++i) {
        fromFile.startStatement();
        ASSERT_EQ(fromFile.nextToken().text.size(), 1102U);
    }
    std::string lists;
    for (int i = 0; i < 1000; ++i) {
        lists += "{";
        for (int n = 0; n < 600; ++n)
            lists += "1  ";
        lists += "}";
    }
    StringLexer fromString{String(std::string_view(lists))};
    for (int i = 0; i < 1000; ++i) {
        fromString.startStatement();
        ASSERT_EQ(fromString.nextToken().text.size(), 1201U);
    }
}

} // namespace vrn::test

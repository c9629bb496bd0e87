// Keywords, the ends of words, and the lifetime of the texts of tokens.
#include "impl/lexer/Word.h"

#include "impl/lexer/FileLexer.h"
#include "impl/lexer/StringLexer.h"
#include "scene/syntax/Keyword.h"
#include "tests/support/Sources.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <set>
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
    // A statement of many tokens, one of which is longer than a block.
    const std::string statement = text + std::string(5000, 'x') + " " + text;
    FileLexer lexer{File::fromSource(std::make_unique<Blocks>(statement, 1000), 1000)};
    std::vector<Token> tokens;
    for (int i = 0; i < 6001; ++i)
        tokens.push_back(lexer.nextToken());
    for (std::size_t i = 0; i < 6001; ++i)
        ASSERT_EQ(tokens[i].text,
                  i == 3000 ? std::string(5000, 'x') : "name" + std::to_string(i < 3000 ? i : i - 3001));
}

// Words of all lengths, so that some of them, after a move to a new block, end where the block ends.
TEST(Lexer, keepsTheTextsOfLongWordsForFourStatements) {
    std::vector<std::string> words;
    std::string text;
    for (std::size_t length = 1; length < 600; ++length) {
        words.emplace_back(length, static_cast<char>('a' + length % 26));
        text += words.back() + ' ';
    }
    for (const std::size_t size : {1U, 2U, 3U, 16U, 64U, 100U}) {
        FileLexer lexer{File::fromSource(std::make_unique<Blocks>(text, size), size)};
        std::vector<Token> tokens;
        for (std::size_t i = 0; i < words.size(); ++i) {
            lexer.startStatement();
            tokens.push_back(lexer.nextToken());
            for (std::size_t k = i < 3 ? 0 : i - 3; k <= i; ++k)
                ASSERT_EQ(tokens[k].text, words[k]) << "block size " << size;
        }
    }
}

// Lists that are not kept as written, each of 600 elements.
TEST(Lexer, keepsTheTextsOfNormalisedListsForFourStatements) {
    std::string text;
    std::vector<std::string> lists;
    for (int i = 0; i < 1000; ++i) {
        const std::string element = std::to_string(i);
        lists.emplace_back("{");
        for (int n = 0; n < 600; ++n) {
            text += (n == 0 ? "{" : "  ") + element;
            lists.back() += (n == 0 ? "" : " ") + element;
        }
        text += " }";
        lists.back() += "}";
    }
    StringLexer lexer{String(std::string_view(text))};
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < lists.size(); ++i) {
        lexer.startStatement();
        tokens.push_back(lexer.nextToken());
        for (std::size_t k = i < 3 ? 0 : i - 3; k <= i; ++k)
            ASSERT_EQ(tokens[k].text, lists[k]);
    }
}

// A source whose blocks are read to few places: those that no token refers to any more.
TEST(Lexer, reusesTheBlocksOfAFile) {
    class Places final : public ByteSource {
    public:
        explicit Places(std::set<const char*>& places) : places_(places) {}
        std::size_t read(char* buffer, std::size_t capacity, String&) override {
            places_.insert(buffer);
            for (std::size_t i = 0; i < capacity; ++i)
                buffer[i] = i % 2 == 0 ? '.' : ';';
            return capacity;
        }

    private:
        std::set<const char*>& places_;
    };
    std::set<const char*> places;
    FileLexer lexer{File::fromSource(std::make_unique<Places>(places), 1000)};
    for (int i = 0; i < 100000; ++i) {
        lexer.startStatement();
        ASSERT_EQ(lexer.nextToken().text, i % 2 == 0 ? "." : ";");
    }
    EXPECT_LE(places.size(), 3U);
}

} // namespace vrn::test

// Limits at their exact value: the largest allowed value passes, the next one is refused with its message.
#include "impl/lexer/FileLexer.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"
#include "tests/support/Sources.h"

namespace vrn::test {

namespace {

Reading readWithin(const SceneLimits& limits, const std::string& text) {
    Reading r;
    r.scene->setLimits(limits);
    readMore(r, String(std::string_view(text)));
    return r;
}

Log onlyError(i32 column, const char* what) {
    return {error(1, column, String::format("PARSE ERROR (1,%d): %s.", column, what).buf())};
}

} // namespace

TEST(Limits, ofArrayElements) {
    for (const u64 limit : {1U, 2U, 5U, 64U, 1000U}) {
        const std::string last = std::to_string(limit - 1);
        const std::string beyond = std::to_string(limit);
        const SceneLimits limits{.maxArrayElements = limit};
        const Reading named = readWithin(limits, "t n; n.a[" + last + "] = 1;");
        EXPECT_EQ(named.log, Log{});
        EXPECT_EQ(named.input("n.a")->size(), limit);
        const std::string refused = "t n; n.a[" + beyond + "] = 1;";
        const Reading tooFar = readWithin(limits, refused);
        EXPECT_EQ(tooFar.log,
                  onlyError(static_cast<i32>(refused.size()), ("invalid input array index: " + beyond).c_str()));
        EXPECT_EQ(tooFar.input("n.a")->size(), 0U);

        std::string text = "t n;";
        for (u64 i = 0; i < limit; ++i)
            text += "n.a[*] = 1;";
        const Reading full = readWithin(limits, text);
        EXPECT_EQ(full.log, Log{});
        EXPECT_EQ(full.input("n.a")->size(), limit);
        text += "n.a[*] = 1;";
        const Reading overfull = readWithin(limits, text);
        EXPECT_EQ(overfull.log, onlyError(static_cast<i32>(text.size()), "invalid input array index: *"));
        EXPECT_EQ(overfull.input("n.a")->size(), limit);
        EXPECT_EQ(overfull.input("n.a")->appendElement(), nullptr);
        // Also of a nested array, and of an array that another text has filled.
        EXPECT_EQ(readWithin(limits, "t n; n.a[0][" + last + "].m = 1;").log, Log{});
        EXPECT_EQ(readWithin(limits, "t n; n.a[0][" + beyond + "].m = 1;").log.size(), 1U);
        Reading again = readWithin(limits, "t n; n.a[" + last + "] = 1;");
        readMore(again, "n.a[*] = 1;");
        EXPECT_EQ(again.log, onlyError(11, "invalid input array index: *"));
    }
}

TEST(Limits, ofBufferBytes) {
    const struct {
        u64 limit;
        const char* type;
        int count; // the largest that is allowed
    } cases[] = {{24, "vec3f", 2}, {35, "vec3f", 2},  {36, "vec3f", 3},  {24, "byte", 24},
                 {25, "byte", 25}, {23, "double", 2}, {24, "double", 3}, {16, "rgba8", 4},
                 {0, "int16", 0},  {1, "int16", 0},   {144, "mat3d", 2}, {143, "mat3d", 1}};
    for (const auto& c : cases) {
        const SceneLimits limits{.maxBufferBytes = c.limit};
        // All elements are missing, which is a warning.
        const Reading fits = readWithin(limits, String::format("t n; n.b = %s[%d] {};", c.type, c.count).buf());
        ASSERT_NE(fits.input("n.b"), nullptr) << c.type;
        EXPECT_EQ(fits.value("n.b").count(), static_cast<u64>(c.count)) << c.type;
        EXPECT_EQ(fits.log.size(), c.count == 0 ? 0U : 1U) << c.type;
        const std::string refused = String::format("t n; n.b = %s[%d] {};", c.type, c.count + 1).buf();
        const Reading tooLarge = readWithin(limits, refused);
        // The position is that of the list, the token consumed last.
        EXPECT_EQ(tooLarge.log, onlyError(static_cast<i32>(refused.size()) - 1,
                                          String::format("invalid buffer element count: [%d]", c.count + 1).buf()))
            << c.type;
        EXPECT_EQ(tooLarge.input("n.b"), nullptr) << c.type;
    }
}

TEST(Limits, ofImplicitElements) {
    for (const u64 limit : {0U, 1U, 4U, 300U}) {
        const SceneLimits limits{.maxImplicitElements = limit};
        const std::string most = std::to_string(limit);
        const std::string more = std::to_string(limit + 1);
        const Reading fits = readWithin(limits, "t n; n.a[" + most + "] = 1; n.a[*] = 1; n.b[0] = 1;");
        EXPECT_EQ(fits.log, Log{}) << "elements that are assigned do not count";
        EXPECT_EQ(fits.input("n.a")->size(), limit + 2);
        const std::string refused = "t n; n.a[" + more + "] = 1;";
        const Reading tooFar = readWithin(limits, refused);
        EXPECT_EQ(tooFar.log,
                  onlyError(static_cast<i32>(refused.size()), ("invalid input array index: " + more).c_str()));
        // Of all arrays together.
        const std::string text = "t n; n.a[" + most + "] = 1; n.b[1] = 1;";
        EXPECT_EQ(readWithin(limits, text).log,
                  onlyError(static_cast<i32>(text.size()), "invalid input array index: 1"));
    }
    const SceneLimits four{.maxImplicitElements = 4};
    EXPECT_EQ(readWithin(four, "t n; n.a[2] = 1; n.b[2] = 1;").log, Log{});
    EXPECT_EQ(readWithin(four, "t n; n.a[2] = 1; n.b[3] = 1;").log, onlyError(28, "invalid input array index: 3"));
    EXPECT_EQ(readWithin(four, "t n; n.a[2][2] = 1;").log, Log{});
    EXPECT_EQ(readWithin(four, "t n; n.a[2][3] = 1;").log, onlyError(19, "invalid input array index: 3"));
}

// Tokens of sizes around those of the lexer's buffers.
TEST(Limits, ofTheLexersBuffersChangeNoToken) {
    std::vector<std::size_t> sizes;
    constexpr auto largest = static_cast<std::size_t>(scaled(1 << 20));
    for (const std::size_t size : {std::size_t(16), std::size_t(240), std::size_t(255), std::size_t(1024),
                                   std::size_t(2048), std::size_t(32) * 1024, largest})
        for (const std::size_t near : {size - 2, size - 1, size, size + 1, size + 2})
            sizes.push_back(near);
    for (const std::size_t size : sizes) {
        SCOPED_TRACE(size);
        const std::string word(size, 'w');
        std::string list;
        while (list.size() + 2 < size)
            list += list.empty() ? "12" : " 3";
        // Two statements, so that the buffers are reused after they have grown.
        const std::string text = word + " \"" + word + "\" {" + list + "} {" + list + ", } #" + word + "\n;" + "last " +
                                 word + "\n.12" + std::string(size, '3') + "\n[" + std::string(size, '4') + "];";
        const auto expectTokens = [&](Lexer& lexer, const char* source) {
            SCOPED_TRACE(source);
            const auto expect = [&](const std::string& expected, i32 line, std::size_t column) {
                const Token token = lexer.nextToken();
                EXPECT_TRUE(token.text == expected) << "a token of " << token.text.size() << " characters";
                EXPECT_EQ(token.line, line);
                EXPECT_EQ(token.column, static_cast<i32>(column));
            };
            std::size_t column = size;
            lexer.startStatement();
            expect(word, 1, column);
            expect('"' + word + '"', 1, column += size + 3);
            lexer.startStatement();
            expect('{' + list + '}', 1, column += list.size() + 3);
            expect('{' + list + " }", 1, column += list.size() + 5);
            lexer.startStatement();
            expect('#' + word, 1, column += size + 2);
            expect(";", 2, 1);
            lexer.startStatement();
            expect("last", 2, 5);
            expect(word, 2, 6 + size);
            lexer.startStatement();
            expect(".", 3, 1);
            expect("12" + std::string(size, '3'), 3, 3 + size);
            expect('[' + std::string(size, '4') + ']', 4, 2 + size);
            expect(";", 4, 3 + size);
            EXPECT_EQ(lexer.nextToken().type, Token::Type::Eof);
        };
        StringLexer fromString{String(std::string_view(text))};
        expectTokens(fromString, "a string");
        FileLexer fromMemory{File::fromMemory(std::string_view(text))};
        expectTokens(fromMemory, "memory");
        ReferenceLexer plain(text);
        expectTokens(plain, "byte by byte");
        for (const std::size_t block : {size, size + 1, std::size_t(17), std::size_t(4096)}) {
            FileLexer fromFile{File::fromSource(std::make_unique<Blocks>(text, block), block)};
            expectTokens(fromFile, "blocks");
        }
    }
}

} // namespace vrn::test

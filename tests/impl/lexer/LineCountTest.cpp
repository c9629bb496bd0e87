// Positions after long runs of line feeds, which the lexer counts in batches.
#include "impl/lexer/FileLexer.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"
#include "tests/support/Sources.h"

#include <algorithm>
#include <functional>

namespace vrn::test {

namespace {

constexpr std::size_t runs[] = {1, 2, 239, 240, 241, 254, 255, 256, 257, 479, 480, 481, 511, 512, 513, scaled(100000)};

// A text with a run of line feeds, and the position of its `?`.
struct Case {
    const char* name;
    std::string before;
    std::string after;
    i32 column; // of the `?`
};

const Case placements[] = {
    {"blanks", "", " ?", 2},
    {"blanks before a word in sight", "", "t a; t b; t c; t d; ?", 21},
    {"blanks after a word", "t n;", "  ?", 3},
    {"blanks that end in others", "t\n n;\r", "\t \r?", 4},
    {"a list in braces", "t n; n.x = byte[1] {", "1}; ?", 5},
    {"a list in braces, between numbers", "t n; n.x = byte[2] {1", "2}; ?", 5},
    {"a list in braces that is an object", "t n; n.x = {", "}; ?", 4},
    {"a list in braces inside a list", "t n; n.x = byte[2] {{1", "}{2}}; ?", 8},
    {"a payload", "t n; n.x = byte[1] {.78", "9c63000000010001}; ?", 20},
    {"a list in parentheses", "t n; n.x = vec2(1", "2); ?", 5},
    {"brackets", "t n; n.x[", "0] = 1; ?", 9},
    {"a string", "t n; n.x = \"", "\"; ?", 4},
    {"a string that goes on", "t n; n.x = \"a\\", "b\"; ?", 5},
    {"a comment and blanks", "# c", " ?", 2},
};

std::string logOf(const std::function<bool(Scene&)>& read) {
    std::string log;
    const auto add = [&](const String& text, TextPosition position) {
        log += String::format("%d,%d: %s\n", position.line, position.column, text.buf()).buf();
    };
    const ScopedLogSink sink([&](const LogRecord& record) { add(record.text, record.position); });
    Scene scene;
    try {
        (void)read(scene);
    } catch (const ReadError& error) {
        add(error.what(), error.position());
    }
    return log;
}

void expectFromAllSources(const std::string& text, const std::string& log) {
    const String string{std::string_view(text)};
    EXPECT_EQ(logOf([&](Scene& scene) { return parseString(&scene, string); }), log) << "from a string";
    EXPECT_EQ(logOf([&](Scene& scene) { return parseVrn(&scene, File::fromMemory(string), true); }), log)
        << "from memory";
    EXPECT_EQ(logOf([&](Scene& scene) {
                  ReferenceLexer lexer(text);
                  return VrnParser().parse(&scene, &lexer);
              }),
              log)
        << "byte by byte";
    for (const std::size_t size : {1U, 100U, 240U, 256U, 257U, 1000U, 300000U})
        EXPECT_EQ(logOf([&](Scene& scene) {
                      File file = File::fromSource(std::make_unique<Blocks>(text, size), size);
                      return parseVrn(&scene, file, true);
                  }),
                  log)
            << "in blocks of " << size;
}

// The error about the `?`, which is reported at the position of the previous character.
std::string invalidToken(std::size_t line, i32 column) {
    const auto at = static_cast<i32>(line);
    return String::format("%d,%d: INVALID TOKEN (%d,%d): '?'\n", at, column - 1, at, column - 1).buf();
}

} // namespace

TEST(LineCount, isExactAfterRunsOfLineFeeds) {
    for (const Case& c : placements)
        for (const std::size_t run : runs) {
            SCOPED_TRACE(std::string(c.name) + ", " + std::to_string(run));
            const auto feeds = static_cast<std::size_t>(std::ranges::count(c.before, '\n'));
            expectFromAllSources(c.before + std::string(run, '\n') + c.after, invalidToken(1 + feeds + run, c.column));
        }
}

// An error right after a run is reported at the last line feed, which belongs to the line that it ends.
TEST(LineCount, countsALineFeedWithTheNextCharacter) {
    for (const std::size_t run : runs) {
        expectFromAllSources(std::string(run, '\n') + "?", invalidToken(run, 2));
        expectFromAllSources("# c" + std::string(run, '\n') + "?", invalidToken(run, run == 1 ? 5 : 2));
    }
}

TEST(LineCount, isExactAfterManyComments) {
    for (const std::size_t run : runs) {
        std::string text;
        for (std::size_t i = 0; i < run; ++i)
            text += "#\n";
        expectFromAllSources(text + " ?", invalidToken(run + 1, 2));
    }
}

// Tokens that contain a run of line feeds, and the tokens after them.
TEST(LineCount, isExactInAndAfterTokens) {
    for (const std::size_t run : runs) {
        const std::string feeds(run, '\n');
        const std::string text = feeds + "a" + feeds + "\"" + feeds + "\"" + feeds + "(1" + feeds + "2)" + feeds + "{" +
                                 feeds + "}[" + feeds + "]" + feeds + "#" + feeds + "b";
        const std::size_t positions[][2] = {{1, 1}, {3, 1}, {5, 2}, {7, 1}, {8, 1}, {9, 1}, {10, 1}};
        const auto expectPositions = [&](Lexer& lexer, const char* source) {
            for (const auto& [lines, column] : positions) {
                const Token token = lexer.nextToken();
                EXPECT_EQ(token.line, static_cast<i32>(1 + lines * run)) << source << " " << run;
                EXPECT_EQ(token.column, static_cast<i32>(column)) << source << " " << run << " " << lines;
            }
        };
        StringLexer fromString{String(std::string_view(text))};
        expectPositions(fromString, "string");
        ReferenceLexer plain(text);
        expectPositions(plain, "byte by byte");
        for (const std::size_t size : {1U, 255U, 256U, 1024U, 1000000U}) {
            FileLexer fromFile{File::fromSource(std::make_unique<Blocks>(text, size), size)};
            expectPositions(fromFile, "blocks");
        }
    }
}

} // namespace vrn::test

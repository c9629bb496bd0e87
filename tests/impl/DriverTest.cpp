#include "tests/support/Reading.h"
#include "tests/support/Sources.h"

#include <thread>

namespace vrn::test {

using Type = Token::Type;

TEST(Driver, readsTextsWithoutStatements) {
    for (const char* text : {"", " \t\r\n", "# only a comment", "\x01\x7F\x80"}) {
        const Reading r = readText(text);
        EXPECT_TRUE(r.isOk) << text;
        EXPECT_EQ(r.log, Log{});
    }
}

TEST(Driver, primesThreeTokens) {
    ParserOn p("a b c d");
    EXPECT_EQ(p->cursor, 0);
    EXPECT_EQ(p->lookahead, 3);
    EXPECT_EQ(p->tokens.size(), 3U);
    EXPECT_EQ(p->current().text, "a");
    EXPECT_EQ(p->ahead(1).text, "b");
    EXPECT_EQ(p->ahead(2).text, "c");
    EXPECT_EQ(p->position(), (TextPosition{0, 0}));
    EXPECT_EQ(p->consume().text, "a");
    EXPECT_EQ(p->prevToken.text, "a");
    EXPECT_EQ(p->current().text, "b");
    EXPECT_EQ(p->ahead(2).text, "d");
    Token out;
    out.text = "untouched";
    EXPECT_FALSE(p->match(out, Type::Dot));
    EXPECT_EQ(out.text, "untouched");
    EXPECT_EQ(p->current().text, "b");
    EXPECT_TRUE(p->match(out, Type::Id));
    EXPECT_EQ(out.text, "b");
}

TEST(Driver, reportsAFirstStatementAtNoPosition) {
    const Reading r = readText("x = 5;");
    EXPECT_FALSE(r.isOk);
    EXPECT_EQ(r.log, (Log{error(0, 0, "PARSE ERROR (0,0): unrecognized token 'x'..")}));
}

TEST(Driver, reportsALaterStatementAtTheTokenBeforeIt) {
    const Reading r = readText("t a;\nt b;\nfoo = 5;");
    EXPECT_EQ(r.log, (Log{error(2, 4, "PARSE ERROR (2,4): unrecognized token 'foo'..")}));
}

TEST(Driver, stopsAtTheFirstErrorAndKeepsWhatWasApplied) {
    const Reading r = readText("t a; a.x = 1; a.in |= a.out; a.ref = a; a.y = ; a.z = 2;");
    EXPECT_FALSE(r.isOk);
    EXPECT_EQ(r.log.size(), 1U);
    EXPECT_EQ(r.value("a.x").asInt(), 1);
    EXPECT_EQ(r.input("a.in")->connection(), nullptr) << "links of a text with an error are not made";
    EXPECT_EQ(r.input("a.ref")->type(), AttrType::Null);
    EXPECT_EQ(r.input("a.z"), nullptr);
}

TEST(Driver, reportsInvalidCharactersThreeTokensAhead) {
    const Reading r = readText("t a; t b; t c; ? ");
    EXPECT_FALSE(r.isOk);
    EXPECT_EQ(r.log, (Log{error(1, 15, "INVALID TOKEN (1,15): '?'")}));
    EXPECT_NE(r.scene->findNode("b"), nullptr);
    EXPECT_EQ(r.scene->findNode("c"), nullptr) << "its last token lets the bad one in";
}

TEST(Driver, throwsErrorsAmongTheFirstThreeTokens) {
    for (const char* text : {"?", "a ?", "a b ?"}) {
        const Reading r = readText(text);
        ASSERT_TRUE(r.thrown) << text;
        EXPECT_EQ(r.log, Log{}) << text;
        EXPECT_EQ(r.thrown->text, String::format("INVALID TOKEN (1,%zu): '?'", strlen(text) - 1));
        EXPECT_EQ(r.thrown->position, (TextPosition{1, static_cast<i32>(strlen(text)) - 1}));
    }
    Scene scene;
    EXPECT_THROW(parseString(&scene, "?"), std::runtime_error);
    EXPECT_FALSE(readText("a b c ?").thrown);
}

TEST(Driver, endsSilentlyAtAnUnterminatedString) {
    const Reading r = readText("t a; \"abc");
    EXPECT_TRUE(r.isOk);
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.scene->nodeCount(), 1U);
}

TEST(Driver, namesTheUnterminatedTokenWhereOneIsExpected) {
    const Reading r = readText("t a; a.x = \"abc");
    EXPECT_EQ(r.log, (Log{error(1, 15,
                                "BAD TOKEN (1,15): expected '(scalar|buffer|reference)', found 'UNEXPECTED EOF "
                                "while parsing STRING'.")}));
}

TEST(Driver, resetsTheHeaderOnlyWhenNotMerging) {
    Scene scene;
    const auto fill = [&] {
        scene.setFileVersion(7);
        scene.setFileTime("noon");
        scene.pushFileComment("# old");
    };
    fill();
    const ScopedLogSink silent([](const LogRecord&) {});
    EXPECT_FALSE(parseVrn(&scene, File::fromMemory("# new\nt a; x"), false));
    EXPECT_EQ(scene.fileVersion(), VRX_FILE_VERSION_1);
    EXPECT_EQ(scene.fileTime(), "");
    EXPECT_EQ(scene.fileComments(), (StringVector{"# new"}));
    fill();
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("# newer"), true));
    EXPECT_EQ(scene.fileVersion(), 7U);
    EXPECT_EQ(scene.fileTime(), "noon");
    EXPECT_EQ(scene.fileComments(), (StringVector{"# new", "# old", "# newer"}));
    EXPECT_TRUE(parseString(&scene, "# last"));
    EXPECT_EQ(scene.fileVersion(), 7U);
    EXPECT_EQ(scene.fileComments().size(), 4U);
    EXPECT_NE(scene.findNode("a"), nullptr) << "nodes are never reset";
}

TEST(Driver, refusesStatementsWithoutAScene) {
    Log log;
    const ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
    EXPECT_TRUE(parseString(nullptr, ""));
    EXPECT_TRUE(parseVrn(nullptr, File::fromMemory(" "), false));
    EXPECT_EQ(log, Log{});
    EXPECT_FALSE(parseVrn(nullptr, File::fromMemory("t a;"), true));
    EXPECT_EQ(log, (Log{error(0, 0, "PARSE ERROR (0,0): no scene to read into.")}));
}

TEST(Driver, readsAgainIntoTheSameScene) {
    Reading r = readText("t a; a.x = 1;");
    readMore(r, "a.x = 2; .y = 3;");
    EXPECT_FALSE(r.isOk) << "the current node is reset between texts";
    EXPECT_EQ(r.value("a.x").asInt(), 2);
}

// A log sink, or other code that runs during a parse, may read from the same file. The characters that it reads are
// removed from the parse, and vice versa.
TEST(Driver, sharesAFileWithASecondReader) {
    const std::string text = "t a; # version: x\na.x \x01\x02 = 1; # note\n";
    for (const std::size_t size : {1U, 2U, 3U, 20U, 4096U}) {
        File file = File::fromSource(std::make_unique<Blocks>(text, size), size);
        Scene scene;
        std::string taken;
        {
            const ScopedLogSink sink([&](const LogRecord&) {
                for (signed char c; taken.size() < 2 && file.read(c);)
                    taken += static_cast<char>(c);
            });
            EXPECT_TRUE(parseVrn(&scene, file, false)) << size;
        }
        // At the warning, `a`, `.` and `x` have been scanned, and the blank after them is the current character.
        EXPECT_EQ(taken, "\x01\x02") << size;
        EXPECT_EQ(scene.fileComments().size(), 2U) << size;
    }
}

TEST(Driver, sharesAFileWithASecondParse) {
    const std::string text = "t a; # version: x\nt b; t c; t d; t e;";
    for (const std::size_t size : {1U, 3U, 4096U}) {
        File file = File::fromSource(std::make_unique<Blocks>(text, size), size);
        Scene first;
        Scene second;
        {
            const ScopedLogSink sink([&](const LogRecord&) { EXPECT_TRUE(parseVrn(&second, file, false)); });
            EXPECT_TRUE(parseVrn(&first, file, false)) << size;
        }
        EXPECT_EQ(first.nodeCount(), 2U) << size << ": b was in the look-ahead";
        EXPECT_EQ(second.nodeCount(), 3U) << size;
    }
}

TEST(Driver, keepsTheOldTokenInItsSlotWhenTheNextIsInvalid) {
    ParserOn p("a b c ?");
    EXPECT_THROW(p->consume(), ReadError);
    EXPECT_EQ(p->current().text, "a");
    EXPECT_EQ(p->current().type, Token::Type::Id);
    EXPECT_EQ(p->prevToken.text, "a");
    EXPECT_EQ(p->ahead(2).text, "c");
}

TEST(Driver, readsOnSeveralThreadsInParallel) {
    constexpr int threadCount = 4;
    std::vector<Reading> readings(threadCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            for (int n = 0; n < 50; ++n) {
                readings[static_cast<std::size_t>(i)] =
                    readText("t a; a.x = vec3f[1] {1 2 3}; a.y = vec2(1 2);\n# version: " + String(u64(100)) +
                             String(u64(i)) + "\na.z = nobody" + String(u64(i)) + "; a.in |= a.out;");
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    for (int i = 0; i < threadCount; ++i) {
        const Reading& r = readings[static_cast<std::size_t>(i)];
        const std::string text = "Cannot assign nonexistent node nobody" + std::to_string(i) + " to a.z.";
        EXPECT_EQ(r.log, (Log{warning(3, 13, text.c_str())}));
        EXPECT_EQ(r.scene->fileVersion(), u64(1000 + i));
    }
}

TEST(Diagnostics, decorateTheirTexts) {
    ParserOn p("a b c d");
    p->consume();
    const auto raised = [&](auto raise) -> LogRecord {
        try {
            raise();
        } catch (const ReadError& e) {
            return {LogSeverity::Error, e.what(), e.position()};
        }
        return {};
    };
    EXPECT_EQ(raised([&] { p->parseError("%s %d", "text", 5); }), error(1, 1, "PARSE ERROR (1,1): text 5."));
    EXPECT_EQ(raised([&] { p->bufferError("ends."); }), error(1, 1, "BUFFER ERROR (1,1): ends.."));
    EXPECT_EQ(raised([&] { p->tokenError("x", p->ahead(1)); }),
              error(1, 5, "BAD TOKEN (1,5): expected 'x', found 'c'."));
    EXPECT_EQ(raised([&] { p->tokenError(p->ahead(1)); }), error(1, 5, "c"));
}

TEST(Diagnostics, printPercentSignsLiterally) {
    const Reading r = readText("t a; a.x = \"%s%n%d\" \"%s\";");
    EXPECT_EQ(r.log, (Log{error(1, 24, "BAD TOKEN (1,24): expected ';', found '\"%s\"'.")}));
}

TEST(Driver, everyMessageHasTheNameOfItsKind) {
    const auto namesOf = [](const char* text) {
        std::vector<std::string> names;
        const auto add = [&](const char* format) {
            names.emplace_back(messageName(format) ? messageName(format) : "?");
        };
        const ScopedLogSink sink([&](const LogRecord& record) { add(record.format); }, Notices::Yes);
        Scene scene;
        try {
            (void)parseString(&scene, text);
        } catch (const ReadError& error) {
            add(error.format());
        }
        return names;
    };
    using Names = std::vector<std::string>;
    EXPECT_EQ(namesOf("?"), Names{"invalidToken"});
    EXPECT_EQ(namesOf("t a; ?"), Names{"invalidToken"});
    EXPECT_EQ(namesOf("t a; a.x = ;"), Names{"badToken"});
    EXPECT_EQ(namesOf("t a; b.x = 1;"), Names{"nodeNotFound"});
    EXPECT_EQ(namesOf("t a; a.x = byte[1] {1 2};"), Names{"tooManyElements"});
    EXPECT_EQ(namesOf("t a; a.x = byte[1] {.78i};"), Names{"unreadablePayload"});
    EXPECT_EQ(namesOf("t a; a.x = true; a.x = 1.5; u a;"), (Names{"typeError", "declaredAsOther"}));
    EXPECT_EQ(messageName(nullptr), nullptr);
    EXPECT_EQ(messageName("of nobody"), nullptr);
}

} // namespace vrn::test

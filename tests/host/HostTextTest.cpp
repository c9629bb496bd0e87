// The reader makes the same changes to the scene of a host for every source of characters. It may ask more than once
// what exists: the fast path for plain statements asks before it leaves a statement to the general path.
#include "impl/Reader.h"
#include "impl/lexer/StringLexer.h"
#include "scene/Scene.h"
#include "tests/host/Queries.h"
#include "tests/support/EachSource.h"
#include "tests/support/RandomText.h"
#include "tests/support/Scaled.h"
#include "tests/support/Texts.h"

#include <gtest/gtest.h>

namespace vrn::test {

TEST(HostText, makesTheSameChangesFromEverySource) {
    constexpr int textCount = scaled(2000);
    const std::size_t blockSizes[] = {1, 2, 3, 7, 16, 17, 31, 64, 1000};
    const Grammar grammar = readGrammar(contentOf(std::string(VRN_TEST_DATA) + "/../../docs/grammar.md"));
    RandomText texts(grammar, 3);
    std::size_t callCount = 0;
    for (int i = 0; i < textCount; ++i) {
        // Inputs of this host do not outlive their nodes, which inputs with a pending link must.
        const std::string text = texts.next({.canRemove = false}) + std::string(70, ' ');
        std::vector<std::string> expected;
        withEachSource(text, blockSizes, [&](const std::string& source, auto read) {
            Scene scene;
            calls.clear();
            reportAll(scene, read, [](std::string report) { calls.push_back(std::move(report)); });
            std::erase_if(calls, isQuery);
            if (expected.empty())
                expected = calls;
            ASSERT_EQ(calls, expected) << source << "\n" << text;
        });
        if (HasFatalFailure())
            return;
        callCount += expected.size();
    }
    EXPECT_GT(callCount, std::size_t(textCount) * 10) << "most texts do something";
}

static const char* const plainText =
    "t a; a.x = 1; a.y = 2; # note\na.z |= a.o; t b: .x = 1.5; .y = \"s\"; a.x = 3; b.z = a;";

// A host's scene throws in one of its functions: the error has the same position as without the fast path, and the
// same characters are consumed.
TEST(HostText, mayThrowInEveryChange) {
    for (int failing = 0; failing < 14; ++failing) {
        std::vector<std::string> logs;
        std::vector<std::size_t> offsets;
        for (const bool readsPlain : {false, true}) {
            int changes = 0;
            onCall = [&](const std::string& call) {
                if (!isQuery(call) && call.find("name maps") == std::string::npos && changes++ == failing)
                    throw std::runtime_error("refused");
            };
            Scene scene;
            StringLexer lexer(String(std::string_view(plainText + std::string(100, ' '))));
            VrnParser parser;
            parser.readsPlainStatements = readsPlain;
            std::string log;
            const ScopedLogSink sink([&](const LogRecord& record) {
                log += std::to_string(record.position.line) + "," + std::to_string(record.position.column) + " ";
            });
            EXPECT_FALSE(parser.parse(&scene, &lexer));
            onCall = nullptr;
            logs.push_back(log);
            offsets.push_back(lexer.offset());
        }
        EXPECT_EQ(logs[0], logs[1]) << failing;
        EXPECT_EQ(offsets[0], offsets[1]) << failing;
    }
}

// A host's scene reads from the file that is being parsed in one of its functions.
TEST(HostText, mayReadFromTheFile) {
    std::vector<std::string> expected;
    for (const bool readsPlain : {false, true}) {
        const std::string text = plainText + std::string(200, ' ');
        const File file = File::fromSource(std::make_unique<Blocks>(text, 150), 150);
        File other = file;
        onCall = [&](const std::string& call) {
            char c = 0;
            if (call.find("createInput(y") != std::string::npos && other.read(c))
                calls.push_back(std::string("read ") + c);
        };
        Scene scene;
        calls.clear();
        VrnParser parser;
        parser.readsPlainStatements = readsPlain;
        const ScopedLogSink sink([](const LogRecord& record) { calls.push_back(record.text.buf()); });
        calls.push_back(parser.parse(&scene, file) ? "read" : "not read");
        onCall = nullptr;
        if (!readsPlain)
            expected = calls;
        EXPECT_EQ(calls, expected);
    }
}

} // namespace vrn::test

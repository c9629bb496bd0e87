// The fast path for plain statements does what the general path does: same scene, same messages, same order.
#include "tests/support/EachSource.h"
#include "tests/support/Reading.h"
#include "tests/support/SameScene.h"
#include "tests/support/Scaled.h"
#include "tests/support/Texts.h"

#include <random>

namespace vrn::test {

namespace {

// A text can only be plain where enough characters follow.
std::string padded(const std::string& text) { return text + std::string(70, ' '); }

struct Outcome {
    Scene scene;
    std::vector<std::string> reports;
};

std::unique_ptr<Outcome> outcomeOf(const std::string& text, std::size_t blockSize, Notices notices, bool readsPlain,
                                   const std::shared_ptr<const Catalogue>& catalogue) {
    auto outcome = std::make_unique<Outcome>();
    outcome->scene.setCatalogue(catalogue);
    const auto read = [&](Scene& scene) {
        VrnParser parser;
        parser.readsPlainStatements = readsPlain;
        if (blockSize == 0)
            return parser.parse(&scene, String(std::string_view(text)));
        return parser.parse(&scene, File::fromSource(std::make_unique<Blocks>(text, blockSize), blockSize));
    };
    reportAll(
        outcome->scene, read, [&](std::string report) { outcome->reports.push_back(std::move(report)); }, notices);
    return outcome;
}

// Describes the first difference between the two paths; empty if there is none.
std::string differenceOfPaths(const std::string& text, const std::shared_ptr<const Catalogue>& catalogue = {}) {
    for (const std::size_t blockSize : {std::size_t(0), std::size_t(300), std::size_t(4096)})
        for (const Notices notices : {Notices::Yes, Notices::No}) {
            const auto general = outcomeOf(text, blockSize, notices, false, catalogue);
            const auto plain = outcomeOf(text, blockSize, notices, true, catalogue);
            const std::string difference = firstDifference(general->scene, plain->scene);
            if (!difference.empty())
                return difference + " in " + text;
            if (general->reports != plain->reports) {
                std::string all = text;
                for (const auto* reports : {&general->reports, &plain->reports})
                    for (const std::string& report : *reports)
                        all += "\n" + report;
                return all;
            }
        }
    return "";
}

constexpr int mutantCount = scaled(6000);

} // namespace

TEST(PlainStatements, doWhatTheGeneralPathDoes) {
    const char* const texts[] = {
        "t n; n.x = 1; n.x = 2; n.x = 2.5; n.x = true; n.x = \"s\"; n.x = vec3(1 2 3); n.y = vec3(1 2 3); n.y = 1;",
        "t n: .x = 1; .y = 2.5; .z |= n.out; .r = n; .r = null; t m; .x = 3; m.x = 4; with m: .x = 5; with k: .x = 6;",
        ".x = 1; t n;",
        "t n; n.x = 1; m.x = 2; n.y = 3;",
        "t n; t n; u n; n.x = 1; with n; with q;",
        "t n; n.x |= n.a; n.x |= n.b; n.x = n; n.x |= m.a; n.y = m; n.y = n; n.z |= n.a; n.z = 1;",
        "# version: 7\n# time: now\n# a comment\n# version: many\nt n; # version: 8\n# another\nn.x = 1;",
        "t n; define d; d.x = 1; d m; m.x = 2; remove n; n.x = 1;",
        "t n; n.x[0] = 1; n.x = 2; n.y = {}; n.y = 1; n.y.z = 2; n.b = float[1] {1}; n.b = 2;",
        // An error in the next three tokens comes before what the statement would report.
        "t n; n.x = 1; n.x = 2.5; ?",
        "t n; n.x = 1; n.x = true; a ?",
        "t n; n.x = 1; n.x = true; a . ?",
        "t n; n.x = 1; n.x = true; a . b ?",
        "t n; n.x = 1; ?",
        "t n; n.x = 1; a ?",
        "t n; n.x = 1; a . ?",
        "t n; n.x = 1; # c\n ?",
        "t n; n.x = 1; # c\n a ?",
        "t n; # c\n ?",
        "t n; # c\n# d\n# e\n ?",
        "t n; n.x = 1; a . b ?",
        "t n; n.x = 1;\xC3\xA4\n n.y = 2; \xC3\xA4 n.z = 3;",
        "\xEF\xBB\xBFt n; n.x = 1; n.y = 2;",
        "\xEF\xBB t n; n.x = 1; n.y = 2;",
        "t\n\nn\n;\nn.x = 1\n;\nn.x = true;\n\n;",
        "t n; n.x = 1; n.y = 1 n.z = 2;",
        "t n; n.x = \"a\\n\\\"b\\\\\"; n.y = \"\\x41\\q\"; n.z = \"a\tb\"; n.w = \"a\nb\";",
        "t n; n.x = 1;\xFF n.y = 2;",
    };
    for (const char* text : texts) {
        EXPECT_EQ(differenceOfPaths(text), "");
        EXPECT_EQ(differenceOfPaths(padded(text)), "");
    }
}

// The comparisons would be in vain if the fast path were never taken.
TEST(PlainStatements, areReadByTheFastPath) {
    const String text(std::string_view(padded("t n; n.x = 1; # c\nn.x = 2; n.y[0] = 1; n.z |= n.o; m.x = 1;")));
    Scene scene;
    VrnParser parser;
    const ScopedLogSink silent([](const LogRecord&) {});
    EXPECT_FALSE(parser.parse(&scene, text));
    EXPECT_EQ(parser.plainStatementCount, 4U);
    const std::string large = [] {
        std::string statements = "t n;\n";
        for (int i = 0; i < 1000; ++i)
            statements += "n.x" + std::to_string(i) + " = 1;\n";
        return statements;
    }();
    Scene fromFile;
    VrnParser fileParser;
    EXPECT_TRUE(fileParser.parse(&fromFile, File::fromSource(std::make_unique<Blocks>(large, 1000), 1000)));
    EXPECT_GT(fileParser.plainStatementCount, 750U) << "all but those near the end of a block";
}

TEST(PlainStatements, respectACatalogue) {
    const char* const json = R"({"types": {"t": {
        "inputs": {
            "real": {"type": "Real"},
            "int": {"type": "Int"},
            "locked": {"type": "Int", "locked": true},
            "link": {"type": "Node", "linkOnly": true},
            "colour": {"type": "Rgba"},
            "choice": {"type": "String", "enum": ["a", "b"]}
        },
        "outputs": ["out"],
        "renamedInputs": {"old": "real"}}}})";
    const auto catalogue = std::make_shared<const Catalogue>(readCatalogue(json));
    const std::string text =
        "t n; n.real = 1; n.old = 2; n.int = 1.5; n.int = 3; n.locked = 1; n.link = n; n.link |= n.out;"
        "n.colour = 1; n.colour = 0.5; n.choice = \"a\"; n.choice = \"c\"; n.other = 1; n.real = true;"
        "n.other |= n.nothing; n.old |= n.out; t m: .old = 5; .choice = \"b\"; .colour = vec3(1 2 3);";
    EXPECT_EQ(differenceOfPaths(padded(text), catalogue), "");
}

TEST(PlainStatements, doSoInAllTexts) {
    for (const auto& path : allTexts())
        EXPECT_EQ(differenceOfPaths(padded(contentOf(path))), "") << path;
}

// Texts of mostly plain statements with a few bytes changed, inserted or removed.
TEST(PlainStatements, doSoInBrokenTexts) {
    const std::string_view statements[] = {
        "light a;\n",      "light b:\n",      "a.x = 1;\n",     ".x = 2.5;\n",       "a.y = vec3(1 2 3);\n",
        "a.z |= b.out;\n", "b.z = a;\n",      "# comment\n",    "a.s = \"text\";\n", ".c = rgba(1 0 0.5);\n",
        "b.x = true;\n",   "a.n[0].m = 1;\n", "remove a;\n",    "with a:\n",         "b.f = float[2] {1 2};\n",
        "a.y = 7;\n",      "# version: 3\n",  ".x |= a.out;\n", "define light;\n",   "a.s = \"\\\"\";\n",
    };
    constexpr std::string_view alphabet = "ab.;:=|#\"\\()[]{}1 -,\n\r?\xC3\xFFtrue";
    std::mt19937 random(5);
    for (int i = 0; i < mutantCount; ++i) {
        std::string text = "light a;\n";
        for (auto count = random() % 12; count > 0; --count)
            text += statements[random() % std::size(statements)];
        for (auto count = random() % 3; count > 0; --count) {
            const std::size_t at = random() % text.size();
            const char c = alphabet[random() % alphabet.size()];
            switch (random() % 3) {
            case 0:
                text[at] = c;
                break;
            case 1:
                text.insert(at, 1, c);
                break;
            default:
                text.erase(at, 1 + random() % 5);
            }
            if (text.empty())
                text = ";";
        }
        ASSERT_EQ(differenceOfPaths(padded(text)), "");
    }
}

} // namespace vrn::test

// Where a text sets nodes and inputs, by the tokens and by the fast path for plain statements.
#include "tests/support/Reading.h"

namespace vrn::test {

namespace {

struct Positions {
    Reading reading;
    SourceMap sources;

    Positions(const char* text, bool readsPlain, const std::shared_ptr<const Catalogue>& catalogue = {}) {
        reading.scene->setCatalogue(catalogue);
        reading.run([&] {
            VrnParser parser;
            parser.sources = &sources;
            parser.readsPlainStatements = readsPlain;
            return parser.parse(reading.scene.get(), String(text));
        });
    }

    [[nodiscard]] std::optional<TextPosition> node(const char* name) const {
        return sources.positionOf(&reading.node(name));
    }
    [[nodiscard]] std::optional<TextPosition> input(const char* path) const {
        return sources.positionOf(reading.input(path));
    }
};

constexpr std::optional<TextPosition> nowhere;

std::optional<TextPosition> at(i32 line, i32 column) { return TextPosition{line, column}; }

} // namespace

TEST(SourceMap, holdsTheEndsOfTheLastNames) {
    const char* text = "mesh box;\n"
                       "with more:\n" // a new node of type `with`
                       "  .a = 1; .name |= box.x;\n"
                       "mesh box: box . far = 2.5;\n" // declared again
                       "box.b.c[1].d = 1;\n"
                       "box.b.e[*] = 1; box\n"
                       " .\n"
                       "  later = \"x\";\n"
                       " box.ref = more;\n"
                       "box.far = 3.5;";
    for (const bool readsPlain : {true, false}) {
        SCOPED_TRACE(readsPlain);
        const Positions p(text, readsPlain);
        EXPECT_EQ(p.node("box"), at(1, 8));
        EXPECT_EQ(p.node("more"), at(2, 9));
        EXPECT_EQ(p.input("more.a"), at(3, 4));
        EXPECT_EQ(p.input("more.name"), at(3, 15));
        EXPECT_EQ(p.input("box.b.c[1].d"), at(5, 12));
        EXPECT_EQ(p.input("box.b.c[1]"), nowhere) << "on the way to others";
        EXPECT_EQ(p.input("box.b"), nowhere);
        EXPECT_EQ(p.input("box.later"), at(8, 7));
        EXPECT_EQ(p.input("box.ref"), at(9, 8));
        EXPECT_EQ(p.input("box.far"), at(10, 7)) << "the last statement counts";
    }
}

TEST(SourceMap, leavesOutWhatNoStatementNames) {
    const auto types =
        std::make_shared<const Catalogue>(readCatalogue(R"({"types": {"t": {"inputs": {"x": {"type": "Int"}},
            "renamedInputs": {"old": "x"}}}})"));
    for (const bool readsPlain : {true, false}) {
        const Positions p("define kind; kind.a = 1;\nkind k; t n; t m; m.old = 2;", readsPlain, types);
        EXPECT_EQ(p.node("kind"), at(1, 11));
        EXPECT_EQ(p.input("kind.a"), at(1, 19));
        EXPECT_EQ(p.input("k.a"), nowhere) << "copied";
        EXPECT_EQ(p.input("n.x"), nowhere) << "from the catalogue";
        EXPECT_EQ(p.input("m.x"), at(2, 23)) << "by a former name";
    }
}

TEST(SourceMap, isFilledByParseVrn) {
    Scene scene;
    SourceMap sources;
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("# time: now\nt a; a.x = 1;"), false, sources));
    EXPECT_EQ(scene.fileTime(), "now");
    EXPECT_EQ(sources.positionOf(scene.findNode("a")->input("x")), at(2, 8));
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("t b;"), false, sources));
    EXPECT_EQ(scene.fileTime(), "") << "the header is that of the last text";
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("# time: then\n"), true, sources));
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("t c;"), true, sources));
    EXPECT_EQ(scene.fileTime(), "then") << "unless it is merged";
    EXPECT_EQ(sources.positionOf(scene.findNode("c")), at(1, 3));
}

} // namespace vrn::test

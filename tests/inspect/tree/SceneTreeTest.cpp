#include "inspect/tree/SceneTree.h"

#include "tests/support/Reading.h"

namespace vrn::test {

using namespace vrn::inspect;

static std::string treeOf(const std::string& text, const TreeOptions& options, const Style& style = Style(false)) {
    const Reading reading = readText(std::string_view(text));
    std::string drawn;
    writeTree(*reading.scene, options, style, [&](std::string_view piece) { drawn += piece; });
    return drawn;
}

TEST(SceneTree, drawsNodesAndTheirInputs) {
    EXPECT_EQ(treeOf("t a; a.x = 1; a.o.p = 2; a.y[2] = 3; u b;", {.elements = 2}), "├── a (t)\n"
                                                                                    "│   ├── x: Int = 1\n"
                                                                                    "│   ├── o: {1 member}\n"
                                                                                    "│   │   └── p: Int = 2\n"
                                                                                    "│   └── y: Int[3]\n"
                                                                                    "│       ├── [0]: Int = 0\n"
                                                                                    "│       ├── [1]: Int = 0\n"
                                                                                    "│       └── ... 1 more\n"
                                                                                    "└── b (u)\n");
}

TEST(SceneTree, drawsWhatIsSelected) {
    const std::string text = "t a; a.o.p = 2; u b; u ab;";
    const struct {
        TreeOptions options;
        const char* tree;
    } cases[] = {
        {{.depth = 0}, "├── a (t)\n├── b (u)\n└── ab (u)\n"},
        {{.name = "a*", .depth = 1}, "├── a (t)\n│   └── o: {1 member}\n└── ab (u)\n"},
        {{.name = "a*", .type = "u"}, "└── ab (u)\n"},
        {{.type = "x"}, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(treeOf(text, c.options), c.tree) << c.options.name << ' ' << c.options.type;
}

TEST(SceneTree, isColoured) {
    EXPECT_EQ(treeOf("t a;", {}, Style(true)), "\x1B[2m└── \x1B[0m\x1B[1ma\x1B[0m (\x1B[36mt\x1B[0m)\n");
}

TEST(SceneTree, goesToTheSinkInBlocks) {
    std::string text;
    for (int i = 0; i < 10'000; ++i)
        text += "t n" + std::to_string(i) + "; ";
    const Reading reading = readText(std::string_view(text));
    std::size_t pieces = 0;
    std::string drawn;
    writeTree(*reading.scene, {}, Style(false), [&](std::string_view piece) {
        ++pieces;
        drawn += piece;
    });
    EXPECT_EQ(std::ranges::count(drawn, '\n'), 10'000);
    EXPECT_LT(pieces, 10U);
    const auto full = [](std::string_view) { throw std::length_error("no space"); };
    EXPECT_THROW(writeTree(*reading.scene, {}, Style(false), full), std::length_error);
}

} // namespace vrn::test

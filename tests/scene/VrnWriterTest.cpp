#include "scene/VrnWriter.h"

#include "impl/Formatter.h"
#include "scene/core/Decompress.h"
#include "tests/support/Reading.h"
#include "tests/support/SameScene.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Texts.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>

namespace vrn::test {

namespace {

struct Written {
    std::string text;
    std::vector<std::string> losses;
};

Written write(const Scene& scene, const VrnWriterOptions& options = {}) {
    Written written;
    for (const VrnLoss& loss : writeVrn(scene, options, [&](std::string_view piece) { written.text += piece; }))
        written.losses.push_back(std::string(loss.path.view()) + ": " + loss.what);
    return written;
}

std::string formatted(const std::string& text, u32 column) {
    std::string result;
    formatVrn(String(std::string_view(text)), {.column = column}, [&](std::string_view piece) { result += piece; });
    return result;
}

// Expects the text to read back without diagnostics as the same scene, which is written as the same text. The formatter
// leaves it alone.
void expectReadsBack(const Scene& scene, const std::string& text, const VrnWriterOptions& options = {}) {
    const Reading again = readText(String(std::string_view(text)));
    EXPECT_TRUE(again.isOk) << text;
    EXPECT_EQ(again.logText(), "result true\n") << text;
    EXPECT_EQ(firstDifference(scene, *again.scene), "") << text;
    EXPECT_EQ(write(*again.scene, options).text, text);
    EXPECT_EQ(formatted(text, options.column), text);
}

// Reads and writes `text` without losses and expects the result to read back; returns the result.
std::string rewritten(const std::string& text, const VrnWriterOptions& options = {}) {
    const Reading r = readText(String(std::string_view(text)));
    const Written written = write(*r.scene, options);
    EXPECT_EQ(written.losses, std::vector<std::string>()) << text;
    expectReadsBack(*r.scene, written.text, options);
    return written.text;
}

} // namespace

TEST(VrnWriter, writesAFileAsAWhole) {
    const TemporaryFolder folder;
    const String path = std::string_view(folder.at("scene.vrn"));
    Reading reading = readText("t a; a.x = 1;");
    EXPECT_TRUE(writeVrnFile(*reading.scene, path).empty());
    File file = File::open(path);
    EXPECT_EQ(file.readBlock(), "t a:\n    .x = 1;\n");
    reading.node("a").createInput("two words", AttrType::Int);
    EXPECT_EQ(writeVrnFile(*reading.scene, path).size(), 1U);
    EXPECT_THROW((void)writeVrnFile(*reading.scene, std::string_view(folder.path())), std::system_error);
    EXPECT_THROW((void)writeVrnFile(*reading.scene, path + "/none"), std::system_error);
}

TEST(VrnWriter, wrapsLongValues) {
    const std::string digits = "0.12345678901234566 ";
    std::string sixteen;
    for (int i = 0; i < 16; ++i)
        sixteen += digits;
    sixteen.pop_back();
    const std::string text = rewritten("n n; n.m = mat4(" + sixteen + "); n.q = quat(1 2 3 4);");
    EXPECT_NE(text.find(".m = mat4(\n        0.12345678901234566 "), std::string::npos) << text;
    EXPECT_NE(text.find("66\n    );\n    .q = quat(1 2 3 4);"), std::string::npos) << text;
    rewritten("n n; n.m = mat4(" + sixteen + ");", {.column = 0});
    rewritten("n n; n.m = mat4(" + sixteen + ");", {.column = 20});
    rewritten("n n; n.r = 0.25; n.i = 123456789; n.s = \"(a b c)\"; n.b = true;", {.column = 5}); // are no lists
    // At the column, and one character beyond it.
    for (const std::size_t length : {74U, 75U, 76U, 77U})
        rewritten("n n; n." + std::string(length, 'x') + " = vec3(1 2 3);");
}

TEST(VrnWriter, writesEachKindOfValue) {
    const std::pair<const char*, const char*> cases[] = {
        {"true", "true"},
        {"-7", "-7"},
        {"7u", "7u"},
        {"9223372036854775807u", "9223372036854775807u"},
        {"-1u", "-1u"}, // the largest UInt
        {"5.", "5.0"},
        {"1e300f", "1.0e+300"},
        {"1.5e300", "1.5e+300"},
        {"1.0e999", "1.0e999"},
        {"-inf", "-inf"},
        {"-nan", "-nan"},
        {"-0.0", "-0.0"},
        {"0.1", "0.1"},
        {"vec2(1, 2.5)", "vec2(1 2.5)"},
        {"rgba(1 0 0)", "rgba(1 0 0 1)"},
        {"quat(0 nan -nan inf)", "quat(0 nan -nan inf)"},
        {"mat3(1 0 0 0 1 0 0 0 1)", "mat3(1 0 0 0 1 0 0 0 1)"},
        {"\"\"", "\"\""},
        {"\"a\\\"b\\\\\"", "\"a\\\"b\\\\\""},
        {"\"\t\n\\r\\x01\"", "\"\\t\\n\\r\\x01\""},
        {"\"\xC3\xA4 \xC3 \\xFF\"", "\"\xC3\xA4 \\xC3 \\xFF\""},
        {"null", "null"},
        {"n", "n"},
        {"{}", "{}"},
        {"[]", "[]"},
        {"float[0] {}", "float[0] {}"},
        {"FLOAT[3] {1 .5 nan}", "float[3] {1 0.5 nan}"},
        {"rgb8[2] {1 2 3 4 5 6}", "rgb8[2] {1 2 3 4 5 6}"},
        {"mat3d[1] {1 0 0 0 1 0 0 0 1}", "mat3d[1] {1 0 0 0 1 0 0 0 1}"},
        {"uint64[1] {18446744073709551615}", "uint64[1] {18446744073709551615}"},
        {"char[2] {-128 127}", "char[2] {-128 127}"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(rewritten(std::string("t n; n.x = ") + value + ";"), std::string("t n:\n    .x = ") + text + ";\n");
}

TEST(VrnWriter, writesAllTypesOfBuffers) {
    for (i32 i = 0; i < dataTypeCount; ++i) {
        const auto type = static_cast<DataType>(i);
        Scene scene;
        Input* input = scene.createNode("t", "n")->createInput("x", AttrType::Buffer);
        AttrData buffer = AttrData::buffer(type, 100);
        for (std::size_t k = 0; k < buffer.bytes().size(); ++k)
            buffer.bytes()[k] = static_cast<std::byte>(k % 97);
        input->assign(buffer);
        for (const u32 column : {0U, 1U, 40U, 100U, 100000U}) {
            const Written written = write(scene, {.column = column});
            EXPECT_EQ(written.losses.empty(), hasKeyword(type)) << dataTypeName(type);
            if (hasKeyword(type))
                expectReadsBack(scene, written.text, {.column = column});
        }
    }
}

TEST(VrnWriter, wrapsListsAtWholeElements) {
    const std::string text = "t n; n.x = vec3f[4] {1 2 3 40 50 60 7 8 9 10 11 12};";
    EXPECT_EQ(rewritten(text, {.column = 30}), "t n:\n"
                                               "    .x = vec3f[4] {\n"
                                               "        1 2 3 40 50 60 7 8 9\n"
                                               "        10 11 12\n"
                                               "    };\n");
    EXPECT_EQ(rewritten(text, {.column = 0}), "t n:\n    .x = vec3f[4] {1 2 3 40 50 60 7 8 9 10 11 12};\n");
    // Exactly as long as the column allows, and one character longer.
    EXPECT_EQ(rewritten(text, {.column = 50}), rewritten(text, {.column = 0}));
    EXPECT_EQ(rewritten(text, {.column = 49}), "t n:\n"
                                               "    .x = vec3f[4] {\n"
                                               "        1 2 3 40 50 60 7 8 9 10 11 12\n"
                                               "    };\n");
    // Elements longer than a line stay whole.
    EXPECT_EQ(rewritten("t n; n.x = vec2f[2] {1000000 2 3 4};", {.column = 12}), "t n:\n"
                                                                                 "    .x = vec2f[2] {\n"
                                                                                 "        1000000 2\n"
                                                                                 "        3 4\n"
                                                                                 "    };\n");
}

// A line may extend to the column, inclusive.
TEST(VrnWriter, wrapsBeyondTheColumn) {
    for (const std::size_t column : {100U, 60U, 73U}) {
        const VrnWriterOptions options{.column = static_cast<u32>(column)};
        const std::string name(column - std::string_view("    . = float[3] {1 2 3};").size(), 'x');
        EXPECT_EQ(rewritten("t n; n." + name + " = float[3] {1 2 3};", options),
                  "t n:\n    ." + name + " = float[3] {1 2 3};\n");
        EXPECT_EQ(rewritten("t n; n.x" + name + " = float[3] {1 2 3};", options),
                  "t n:\n    .x" + name + " = float[3] {\n        1 2 3\n    };\n");
        // The same for one line of a list that is wrapped.
        std::string line = "1";
        std::size_t count = 2;
        for (; line.size() + 2 <= column - 8; ++count)
            line += " 2";
        line += std::string(column - 8 - line.size(), '3');
        ASSERT_EQ(8 + line.size(), column);
        const std::string head = ".x = int64[" + std::to_string(count) + "] {";
        const std::size_t last = line.rfind(' ');
        EXPECT_EQ(rewritten("t n; n" + head + line + " 4};", options),
                  "t n:\n    " + head + "\n        " + line + "\n        4\n    };\n");
        EXPECT_EQ(rewritten("t n; n" + head + line + "0 4};", options), "t n:\n    " + head + "\n        " +
                                                                            line.substr(0, last) + "\n        " +
                                                                            line.substr(last + 1) + "0 4\n    };\n");
    }
    const std::string name(100 - std::string_view("    . = float[3] {1 2 3};").size(), 'x');
    for (const bool isLonger : {false, true}) // longer than the default column
        EXPECT_EQ(rewritten("t n; n." + name + (isLonger ? "x" : "") + " = float[3] {1 2 3};"),
                  rewritten("t n; n." + name + (isLonger ? "x" : "") + " = float[3] {1 2 3};", {.column = 100}));
}

TEST(VrnWriter, wrapsLongListsWithoutGaps) {
    Scene scene;
    Input* input = scene.createNode("t", "n")->createInput("x", AttrType::Buffer);
    AttrData buffer = AttrData::buffer(DataType::Vec3f, 5000);
    float next = 0;
    for (float& number : buffer.elements<float>())
        number = next += 0.37F;
    input->assign(std::move(buffer));
    for (const u32 column : {0U, 45U, 77U, 100U, 5000U}) {
        const Written written = write(scene, {.column = column});
        expectReadsBack(scene, written.text, {.column = column});
        EXPECT_EQ(written.text.find("  }") == std::string::npos, column == 0);
        for (std::size_t at = 0, end; column != 0 && at < written.text.size(); at = end + 1) {
            end = written.text.find('\n', at);
            EXPECT_LE(end - at, column);
            EXPECT_TRUE(end == at || written.text[end - 1] != ' ');
        }
    }
}

TEST(VrnWriter, compressesBytesOnRequest) {
    const std::string text = "t n; n.x = byte[1000] {1 2 3}; n.y = float[100] {1}; n.z = byte[9] {1};";
    const std::string written = rewritten(text, {.column = 60, .compressAbove = 10});
    EXPECT_NE(written.find(".x = byte[1000] {"), std::string::npos);
    EXPECT_NE(written.find(".78"), std::string::npos);
    EXPECT_EQ(written.find("1 2 3"), std::string::npos);
    EXPECT_NE(written.find("byte[9] {1 0 0"), std::string::npos);
    EXPECT_LT(written.size(), 700U);
    Scene scene;
    AttrData bytes = AttrData::buffer(DataType::Rgba8, 10000);
    for (std::size_t i = 0; i < bytes.bytes().size(); ++i)
        bytes.bytes()[i] = static_cast<std::byte>(i * i >> 3);
    scene.createNode("t", "n")->createInput("x", AttrType::Buffer)->assign(std::move(bytes));
    for (const u32 column : {0U, 1U, 9U, 50U, 101U}) {
        const VrnWriterOptions options{.column = column, .compressAbove = 0};
        expectReadsBack(scene, write(scene, options).text, options);
    }
}

TEST(VrnWriter, writesContainers) {
    const std::pair<const char*, const char*> cases[] = {
        {"n.o.a.b = 1; n.o.c = 2;", "    .o.a.b = 1;\n    .o.c = 2;\n"},
        {"n.a[*] = 1; n.a[*] = 2;", "    .a[0] = 1;\n    .a[1] = 2;\n"},
        {"n.a[1].m = 1;", "    .a[0] = {};\n    .a[1].m = 1;\n"},
        {"n.a[1][1] = 1;", "    .a[0] = [];\n    .a[1][0] = 0;\n    .a[1][1] = 1;\n"},
        {"n.a[0] = \"s\"; n.a = [];", "    .a[0] = \"\";\n    .a = [];\n"},
        {"n.a[0][0] = 1; n.a = [];", "    .a[0] = [];\n    .a = [];\n"},
        {"n.a[0] = byte[1] {1}; n.a = [];", "    .a[0] = float[0] {};\n    .a = [];\n"},
        {"n.a[1] = int16[1] {1};", "    .a[0] = int16[0] {};\n    .a[1] = int16[1] {1};\n"},
        {"n.a[0] = int16[1] {1}; n.a[2] |= null;",
         "    .a[0] = int16[1] {1};\n    .a[1] |= null;\n    .a[2] |= null;\n"},
        {"n.a[0] = int16[1] {1}; n.a = []; n.a[0] |= null;",
         "    .a[0] = float[0] {};\n    .a = [];\n    .a[0] |= null;\n"},
        {"n.a[1] = n;", "    .a[0] |= null;\n    .a[1] = n;\n"},
        {"n.a[0] |= n.out; n.a[1][0] = 1;", "    .a[0] |= n.out;\n    .a[1][0] = 1;\n"},
        {"n.a[0] = n; n.a[1] = [];", "    .a[0] = [];\n    .a[1] = [];\n"},
        {"n.a[0] = n; n.a[1][0] |= null;", "    .a[0] = n;\n    .a[1][0] |= null;\n"},
        {"n.a[0] |= n.o; n.a[1][0] = 1; n.a[3] |= n.p;",
         "    .a[0] |= n.o;\n    .a[1][0] = 1;\n    .a[2] |= null;\n    .a[3] |= n.p;\n"},
        {"n.a[0] |= n.o; n.a[2][0] = 1; n.a[1] |= n.p;", "    .a[0] |= n.o;\n    .a[2][0] = 1;\n    .a[1] |= n.p;\n"},
        {"n.a[0] |= n.o; n.a[1][0] = 1; n.a[1] = []; n.a[2] |= n.p;",
         "    .a[0] = [];\n    .a[0] |= n.o;\n    .a[1][0] = 0;\n    .a[1] = [];\n    .a[2] = [];\n"
         "    .a[2] |= n.p;\n"},
        {"n.a[1] |= n.out; n.a[2] = 5;", "    .a[0] |= null;\n    .a[1] |= n.out;\n    .a[2] = 5;\n"},
    };
    for (const auto& [text, written] : cases)
        EXPECT_EQ(rewritten(std::string("t n; ") + text), std::string("t n:\n") + written);
}

// Links can create elements before the array has a type, at higher indices than the elements that give it one.
TEST(VrnWriter, writesLinksAfterElementsThatGiveTheArrayAType) {
    EXPECT_EQ(rewritten("t a; t b; a.l[3] = b; a.l[1] |= b.x; a.l[0].x = 1; a.l[2].y.z = 2;"),
              "t a:\n    .l[1] |= b.x;\n    .l[3] = b;\n"
              "    .l[0].x |= null;\n    .l[0] = {};\n    .l[0].x = 1;\n"
              "    .l[2].x |= null;\n    .l[2] = {};\n    .l[2].y.z = 2;\n\nt b;\n");
    for (const char* text :
         {"a.l[1] |= null; a.l[0].x = 1; a.l[0] = {};", "a.l[1] |= null; a.l[0][0] = 1;",
          "a.l[2] |= null; a.l[0][0] |= null; a.l[0] = []; a.l[3][0] = 2;",
          "a.l[1] |= null; a.l[0][0] = 1; a.l[0] = [];", "a.l[4] |= null; a.l[1][0].x = 1; a.l[9] = [];",
          "a.l[2] |= null; a.l[0][1] |= null; a.l[0][0].x[0] = true;"})
        (void)rewritten(std::string("t a; ") + text);
}

// A program, or a file with a type error, can create elements without a type in an array with a type. They take that
// type and keep index and connection.
TEST(VrnWriter, keepsLinksOfElementsThatItCannotLeaveUntyped) {
    const struct {
        const char* text;
        const char* written;
        std::vector<std::string> lost;
    } cases[] = {
        {"n.x[0] |= n.a; n.x[1] |= n.b; n.x[0] = 5;",
         "    .x[0] = 5;\n    .x[0] |= n.a;\n    .x[1] |= n.b;\n",
         {"n.x[1]"}},
        {"n.x[2] |= n.a; n.x[0] = true;",
         "    .x[0] = true;\n    .x[1] |= null;\n    .x[2] |= n.a;\n",
         {"n.x[1]", "n.x[2]"}},
        {"n.x[1] = n; n.x[0] = 1;", "    .x[0] = 1;\n    .x[1] |= null;\n", {"n.x[1]"}},
    };
    for (const auto& c : cases) {
        const Reading r = readText("t n; " + String(c.text));
        const Written written = write(*r.scene);
        EXPECT_EQ(written.text, "t n:\n" + std::string(c.written));
        std::vector<std::string> lost;
        for (const std::string& loss : written.losses)
            lost.push_back(loss.substr(0, loss.find(':')));
        EXPECT_EQ(lost, c.lost) << c.text;
        EXPECT_EQ(readText(String(std::string_view(written.text))).logText(), "result true\n") << c.text;
    }
    // When a file is read, a buffer sets the type of all its siblings; a program can leave them without one.
    Scene scene;
    Node& n = *scene.createNode("t", "n");
    Input* buffers = n.createArray("b", AttrType::Null);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(buffers->appendElement());
    buffers->element(0)->connect(n.findOutput("a"));
    buffers->element(1)->assign(AttrData::buffer(DataType::Float, 1));
    buffers->element(2)->assign(AttrData::buffer(DataType::Aabbf, 1));
    buffers->element(2)->connect(n.findOutput("b"));
    const Written written = write(scene);
    EXPECT_EQ(written.text, "t n:\n    .b[0] |= n.a;\n    .b[1] = float[1] {0};\n    .b[2] |= n.b;\n");
    EXPECT_EQ(written.losses.size(), 2U);
}

// The text reads back with the catalogue as the same scene, although names are older names of other inputs.
TEST(VrnWriter, writesTheNamesThatTheCatalogueLeadsToTheInput) {
    auto catalogue = std::make_shared<Catalogue>();
    NodeType type("t");
    for (const char* name : {"a", "b", "d"})
        type.addInput({.name = name, .type = AttrType::Real});
    type.renameInput("b", "a"); // so `b` itself needs an older name
    type.renameInput("two words", "b");
    type.renameInput("c", "b");
    type.renameInput("d", "a"); // `d` has no older name
    for (const char* name : {"out", "image"})
        type.addOutput(name);
    type.renameOutput("image", "out");
    type.renameOutput("picture", "image");
    catalogue->add(std::move(type));
    Reading r = readText("t n; n.a = 1.; n.c = 2.; n.link |= n.picture; n.other |= n.image;", catalogue);
    EXPECT_EQ(r.value("n.b").asReal(), 2);
    Written written = write(*r.scene);
    EXPECT_EQ(written.text, "t n:\n    .a = 1.0;\n    .c = 2.0;\n    .link |= n.picture;\n    .other |= n.out;\n");
    EXPECT_EQ(written.losses,
              (std::vector<std::string>{"n.d: the input is left out: its name is an older name of another input"}));
    const Reading again = readText(String(std::string_view(written.text)), catalogue);
    EXPECT_EQ(again.logText(), "result true\n");
    EXPECT_EQ(firstDifference(*r.scene, *again.scene), "");
}

TEST(VrnWriter, losesNothingThatTheCatalogueMakes) {
    auto catalogue = std::make_shared<Catalogue>();
    NodeType type("t");
    type.addInput({.name = "untyped", .type = AttrType::Buffer});
    type.addInput({.name = "linked", .type = AttrType::Buffer});
    type.addOutput("out");
    catalogue->add(std::move(type));
    const Reading r = readText("t n; n.linked |= n.out; t m; m.x = 1;", catalogue);
    const Written written = write(*r.scene);
    EXPECT_EQ(written.losses, std::vector<std::string>());
    EXPECT_EQ(written.text, "t n:\n    .linked |= n.out;\n\nt m:\n    .x = 1;\n");
    EXPECT_EQ(firstDifference(*r.scene, *readText(String(std::string_view(written.text)), catalogue).scene), "");
}

TEST(VrnWriter, writesLinks) {
    EXPECT_EQ(rewritten("t n; n.a = 1; n.a |= m.out; n.b |= m.out; n.c = m; n.d |= null; n.e |= m.a[ * ][0]; t m;"),
              "t n:\n    .a = 1;\n    .a |= m.out;\n    .b |= m.out;\n    .c = m;\n    .d |= null;\n"
              "    .e |= m.a[ * ][0];\n\nt m;\n");
}

// Only a link creates an input without a value: a connection, or a link to null.
TEST(VrnWriter, writesInputsWithoutAType) {
    EXPECT_EQ(rewritten("t n; n.a |= null; n.b |= n.out; n.o.c |= null; n.o.d |= n.out; n.l[0] |= null;"
                        "n.l[1] |= n.out;"),
              "t n:\n    .a |= null;\n    .b |= n.out;\n    .o.c |= null;\n    .o.d |= n.out;\n"
              "    .l[0] |= null;\n    .l[1] |= n.out;\n");
    Scene scene;
    Node& n = *scene.createNode("t", "n");
    n.createInput("a", AttrType::Null);
    n.createInput("b", AttrType::Null)->connect(n.findOutput("out"));
    const Written written = write(scene);
    EXPECT_EQ(written.losses, std::vector<std::string>());
    EXPECT_EQ(written.text, "t n:\n    .a |= null;\n    .b |= n.out;\n");
    const Reading again = readText(String(std::string_view(written.text)));
    EXPECT_EQ(again.input("n.a")->type(), AttrType::Null);
    EXPECT_EQ(again.input("n.b")->type(), AttrType::Null);
    expectReadsBack(scene, written.text);
}

TEST(VrnWriter, writesNodesInTheirOrder) {
    EXPECT_EQ(rewritten("# version: 3\n# time: now\n#\nt a; t b; u c; c.x = 1; remove d: with e: t f;"),
              "# version: 3\n# time: now\n#\n\nt a;\nt b;\n\nu c:\n    .x = 1;\n\nremove d:\nwith e;\nt f;\n");
}

TEST(VrnWriter, leavesOutWhatNodesHaveFromTheirDefinition) {
    EXPECT_EQ(rewritten("define d; with d: .x = 1; .a[*] = 1.; .o.m = 2; d same; d more; more.y = 3; d other:"
                        ".x = 2; .a[*] = 2.; .o.m = 3;"),
              "define d;\n\nwith d:\n    .x = 1;\n    .a[0] = 1.0;\n    .o.m = 2;\n\nd same;\n\n"
              "d more:\n    .y = 3;\n\n"
              "d other:\n    .x = 2;\n    .a = [];\n    .a[0] = 1.0;\n    .a[1] = 2.0;\n    .o = {};\n    .o.m = 3;\n");
}

TEST(VrnWriter, writesADefinitionThatHasChangedAfterItsNodes) {
    EXPECT_EQ(
        rewritten("define d; d.x = 1; d n; d.y = 2; d m;"),
        "define d;\n\nd n:\n    .x = 1;\n\nd m:\n    .x = 1;\n    .y = 2;\n\nwith d:\n    .x = 1;\n    .y = 2;\n");
    // Links are resolved at the end of the file, after the node has copied the definition.
    EXPECT_EQ(rewritten("define d; d.r = null; d n; n.r = n;"),
              "define d;\n\nwith d:\n    .r = null;\n\nd n:\n    .r = n;\n");
}

TEST(VrnWriter, listsWhatAFileCannotExpress) {
    Scene scene;
    scene.setFileVersion(2);
    scene.setFileTime("noon");
    scene.pushFileComment("no comment");
    scene.createNode("t", "null");
    scene.createNode("a type", "a");
    Node& n = *scene.createNode("t", "n");
    n.createInput("", AttrType::Real);
    n.createInput("link", AttrType::Real)->connect(scene.findNode("null")->findOutput("out"));
    n.createInput("reference", AttrType::Node)->setNode(scene.findNode("null"));
    n.createInput("buffer", AttrType::Buffer);
    n.createInput("boxes", AttrType::Buffer)->assign(AttrData::buffer(DataType::Aabbf, 1));
    n.createArray("nodes", AttrType::Node)->appendElement();
    Input* mixed = n.createArray("mixed", AttrType::Null);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(mixed->appendElement());
    mixed->element(0)->assign(AttrData::real(0));
    mixed->element(2)->setNode(&n);
    n.createInput("nan", AttrType::Real)->assign(AttrData::real(std::numeric_limits<double>::quiet_NaN()));
    const Written written = write(scene);
    EXPECT_EQ(written.losses,
              (std::vector<std::string>{
                  ": the comment is left out: it does not begin with `#`, or contains a line end or a byte 0xFF",
                  ": no comment states the file version; one is added",
                  ": no comment states the file time; one is added",
                  "null: the node is left out: its name or type is not an identifier",
                  "a: the node is left out: its name or type is not an identifier",
                  "n.: the input is left out: its name is not an identifier",
                  "n.link: the link is left out: its target is left out or cannot be named",
                  "n.reference: the link is left out: its target is left out or cannot be named",
                  "n.buffer: the buffer has no element type: only its index and connection, if any, are written",
                  "n.boxes: the buffer is left out: its element type has no keyword",
                  "n.nodes: the element type of the array is left out: a reader derives it from the elements",
                  "n.mixed[1]: the element takes the element type of its array: only its index and connection are kept",
                  "n.mixed[2]: the element takes the element type of its array: only its index and connection are kept",
                  "n.nan: a NaN loses its sign or payload",
              }));
    EXPECT_EQ(written.text,
              "# version: 2\n# time: noon\n\nt n:\n    .link = 0.0;\n    .reference = null;\n"
              "    .nodes[0] = null;\n    .mixed[0] = 0.0;\n    .mixed[1] |= null;\n    .mixed[2] |= null;\n"
              "    .nan = -nan;\n");
    EXPECT_EQ(readText(String(std::string_view(written.text))).logText(), "result true\n");
}

// Setting the element type in a file would give it to the elements that links made.
TEST(VrnWriter, losesTheElementTypeOfLinkedElements) {
    Scene scene;
    Node& n = *scene.createNode("t", "n");
    Input* array = n.createArray("x", AttrType::Null);
    array->appendElement()->connect(n.findOutput("o"));
    array->set(AttrData::array(AttrType::Real));
    ASSERT_EQ(array->elementType(), AttrType::Real);
    const Written written = write(scene);
    EXPECT_EQ(written.losses,
              (std::vector<std::string>{
                  "n.x: the element type of the array is left out: a reader derives it from the elements"}));
    EXPECT_EQ(written.text, "t n:\n    .x[0] |= n.o;\n");
}

// A part of a scene that cannot be written does not affect the rest.
TEST(VrnWriter, losesNoMoreThanItLists) {
    Scene scene;
    Node& n = *scene.createNode("t", "n");
    Node& ofBadType = *scene.createNode("bad type", "good");
    n.createInput("link", AttrType::Null)->connect(ofBadType.findOutput("out"));
    n.createInput("reference", AttrType::Node)->setNode(&ofBadType);
    n.createInput("object", AttrType::Object)->createInput("m", AttrType::Buffer);
    n.createArray("objects", AttrType::Object)->appendElement()->createInput("m", AttrType::Buffer);
    scene.defineNode("bad name")->createInput("x", AttrType::Int);
    scene.createNode("bad name", "late");
    Node& definition = *scene.defineNode("d");
    definition.createInput("x y", AttrType::Int);
    definition.createInput("r", AttrType::Real)->assign(AttrData::real(std::numeric_limits<double>::quiet_NaN()));
    scene.createNode("d", "copy");
    const Written written = write(scene);
    EXPECT_EQ(written.text,
              "t n:\n    .link |= null;\n    .reference = null;\n    .object = {};\n    .objects[0] = {};\n\n"
              "define d;\n\nd copy:\n    .r = -nan;\n\nwith d:\n    .r = -nan;\n");
    std::vector<std::string> paths;
    for (const std::string& loss : written.losses)
        paths.push_back(loss.substr(0, loss.find(':')));
    EXPECT_EQ(paths, (std::vector<std::string>{"n.link", "n.reference", "n.object.m", "n.objects[0].m", "good",
                                               "bad name", "late", "copy.x y", "copy.r", "d.x y", "d.r"}));
    EXPECT_EQ(readText(String(std::string_view(written.text))).logText(), "result true\n");
}

TEST(VrnWriter, writesNoValuesThatTheCatalogueRefuses) {
    auto catalogue = std::make_shared<Catalogue>();
    NodeType type("t");
    type.addInput({.name = "locked", .type = AttrType::Array, .elementType = AttrType::Real, .isLocked = true});
    type.addInput({.name = "linked", .type = AttrType::Real, .isLinkOnly = true});
    type.addInput({.name = "choice", .type = AttrType::String, .enumeration = {"one", "two"}});
    type.addOutput("out");
    catalogue->add(std::move(type));
    Reading r;
    r.scene->setCatalogue(catalogue);
    r.run([&] { return parseString(r.scene.get(), "t n; n.linked |= n.out; t m; n.x = 1;"); });
    const Written written = write(*r.scene);
    EXPECT_EQ(written.text, "t n:\n    .linked |= n.out;\n    .x = 1;\n\nt m:\n");
    EXPECT_TRUE(written.losses.empty());
    Reading again;
    again.scene->setCatalogue(catalogue);
    again.run([&] { return parseString(again.scene.get(), String(std::string_view(written.text))); });
    EXPECT_EQ(again.logText(), "result true\n");
    EXPECT_EQ(firstDifference(*r.scene, *again.scene), "");
    // A program has changed the value.
    r.input("m.linked")->assign(AttrData::real(5));
    EXPECT_EQ(write(*r.scene).losses,
              (std::vector<std::string>{"m.linked: the value is left out: the input is locked or link-only"}));
}

TEST(VrnWriter, listsTimesThatNoCommentCanState) {
    for (const char* time : {" noon", "two\nlines", "version: 7"}) {
        Scene scene;
        scene.setFileTime(time);
        const Written written = write(scene);
        EXPECT_EQ(written.losses, (std::vector<std::string>{": the file time is left out: no comment can state it"}))
            << time;
        EXPECT_EQ(written.text, "");
    }
}

TEST(VrnWriter, goesAsDeepAsATextDoes) {
    std::string path;
    for (int i = 0; i < 3000; ++i)
        path += ".a";
    EXPECT_EQ(rewritten("t n; n" + path + " = 1;"), "t n:\n    " + path + " = 1;\n");
}

TEST(VrnWriter, whatTheSinkThrowsPassesThrough) {
    const Reading r = readText("t n; n.x = float[100000] {};");
    EXPECT_THROW((void)writeVrn(*r.scene, {}, [](std::string_view) { throw std::runtime_error("full"); }),
                 std::runtime_error);
}

// All VRN files of the project.
TEST(VrnWriter, examplesAndGoldenTextsSurvive) {
    const std::vector<std::filesystem::path> paths = allTexts();
    EXPECT_GE(paths.size(), 60U);
    for (const std::filesystem::path& path : paths) {
        Reading r;
        r.run([&] { return parseVrn(r.scene.get(), File::open(path.c_str()), false); });
        for (const u32 column : {100U, 0U}) {
            const Written written = write(*r.scene, {.column = column});
            EXPECT_EQ(written.losses, std::vector<std::string>()) << path;
            const Reading again = readText(String(std::string_view(written.text)));
            EXPECT_TRUE(again.isOk) << path;
            EXPECT_EQ(firstDifference(*r.scene, *again.scene), "") << path;
            EXPECT_EQ(write(*again.scene, {.column = column}).text, written.text) << path;
        }
    }
}

TEST(VrnWriter, leavesOutElementsOnRequest) {
    const char* const text = "# version: 1\n\nt a;\na.f = float[2] {1 nan};\na.b = byte[3] {1 2 3};\na.x = 5;\n"
                             "a.l[0] = vec2f[1] {1 2};\n";
    const Reading reading = readText(text);
    const Written written = write(*reading.scene, {.compressAbove = 0, .hasElements = false});
    EXPECT_TRUE(written.losses.empty());
    EXPECT_EQ(written.text, "# version: 1\n\nt a:\n    .f = float[0] {};\n    .b = byte[0] {};\n    .x = 5;\n"
                            "    .l[0] = vec2f[0] {};\n");
}

} // namespace vrn::test

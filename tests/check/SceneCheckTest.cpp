// Each kind of finding, with scenes that are right next to scenes that are wrong.
#include "check/SceneCheck.h"
#include "scene/CatalogueJson.h"
#include "scene/core/TextEncoding.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <vrn/vrn.h>

namespace vrn::test {

using check::Options;

namespace {

// A catalogue of made-up types: the checks know none.
constexpr const char* rules = R"json({"types": {
    "shape": {"root": true, "inputs": {
        "points": {"type": "Buffer"},
        "corners": {"type": "Buffer", "indexes": "points", "countOf": "sum(faces)"},
        "tris": {"type": "Buffer", "indexes": "points"},
        "faces": {"type": "Buffer"},
        "normals": {"type": "Buffer", "countOf": ["points", "numbers(tris)", "corners"]},
        "sets": {"type": "Array", "elementType": "Object", "members": {
            "coords": {"type": "Buffer", "dataType": "Vec2f", "countOf": "points"},
            "at": {"type": "Buffer", "indexes": "sets[].coords", "countOf": ["numbers(tris)", "points*2"]},
            "tag": {"type": "String", "enum": ["front", "back"]}}},
        "bones": {"type": "Array", "countOf": "points"},
        "bone": {"type": "Buffer", "indexes": "bones"},
        "surface": {"type": "Null", "linkOnly": true, "accepts": ["paint"]},
        "extra": {"type": "Int", "optional": true, "max": 10}}},
    "paint": {"inputs": {
        "gloss": {"type": "Real", "min": 0, "max": 1, "default": -1},
        "hue": {"type": "Rgba", "min": 0},
        "steps": {"type": "Int", "max": 10},
        "size": {"type": "UInt", "min": 1},
        "ramp": {"type": "Buffer", "min": -1, "max": "inf"},
        "levels": {"type": "Array", "max": 3},
        "mode": {"type": "String", "default": "", "enum": ["flat", "shiny", ""]},
        "digit": {"type": "String", "enum": ["0", "1", "2", "3", "4", "5", "6", "7", "8", "9"]},
        "image": {"type": "String", "file": true, "embeddedIn": ["bytes"]},
        "images": {"type": "Array", "file": true},
        "bytes": {"type": "Buffer"},
        "coat": {"type": "Object", "members": {
            "amount": {"type": "Real", "min": 0},
            "layer": {"type": "Object", "members": {"depth": {"type": "Int"}}}}}}, "outputs": ["out"]},
    "place": {"root": true, "open": true, "inputs": {
        "up": {"type": "Node", "hierarchy": "parent", "accepts": ["place"]},
        "down": {"type": "Array", "hierarchy": "children", "accepts": ["place", "shape"]},
        "what": {"type": "Node"},
        "visible": {"type": "Bool", "default": true},
        "box": {"type": "Object", "members": {"lower": {"type": "Pos3"}, "upper": {"type": "Pos3"}}}}, "outputs": ["out"]}}})json";

std::string findingsIn(const std::string& text, const Options& options = {}) {
    Scene scene;
    const auto catalogue = std::make_shared<const Catalogue>(readCatalogue(rules));
    scene.setCatalogue(catalogue);
    SourceMap sources;
    std::string log;
    const ScopedLogSink sink([&](const LogRecord& record) { log += std::string(record.text.view()) + '\n'; });
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory(std::string_view(text)), false, sources)) << text << log;
    std::string found;
    for (const LogRecord& finding : check::checkScene(scene, *catalogue, sources, options)) {
        EXPECT_EQ(finding.severity, LogSeverity::Warning);
        found += std::to_string(finding.position.line) + ',' + std::to_string(finding.position.column) + ' ' +
                 check::kindName(finding.format) + ": " + std::string(finding.text.view()) + '\n';
    }
    return found;
}

// The findings of a wrong text, and the same text, corrected, that has none. Both begin with "shape s; paint p;
// place a; place b; place c;" and a line end.
struct Case {
    const char* wrong;
    const char* findings;
    const char* right;
};

class SceneCheck : public testing::Test {
protected:
    void expect(std::span<const Case> cases, const Options& options = {}) const {
        const std::string nodes = "shape s; paint p; place a; place b; place c;\n";
        for (const Case& each : cases) {
            EXPECT_EQ(findingsIn(nodes + each.wrong, options), each.findings) << each.wrong;
            EXPECT_EQ(findingsIn(nodes + each.right, options), "") << each.right;
        }
    }
};

} // namespace

TEST_F(SceneCheck, findsUnknownTypes) {
    const Case cases[] = {
        {"shap x;", "2,6 unknownType: the type shap of node x is not in the catalogue; did you mean shape?\n",
         "shape x;"},
        {"zzz y; zzz x; zzz w;", "2,5 unknownType: the type zzz of node y and 2 more is not in the catalogue\n",
         "define zzz; zzz y; zzz x;"},
        {"with q: .x = 1;", "2,6 unknownType: the type with of node q is not in the catalogue\n", "with a: .v = 1;"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsUnknownInputs) {
    const Case cases[] = {
        {"s.norms = 1;", "2,7 unknownInput: s.norms is unknown to the type shape\n", "s.normals = vec3f[0] {};"},
        {"p.glos = 1;", "2,6 unknownInput: p.glos is unknown to the type paint; did you mean gloss?\n", "p.gloss = 1;"},
        {"s.extar = 1;", "2,7 unknownInput: s.extar is unknown to the type shape; did you mean extra?\n",
         "s.extra = 1;"},
        {"p.coat.amuont = 1;", "2,13 unknownInput: p.coat.amuont is unknown to the type paint; did you mean amount?\n",
         "p.coat.amount = 1;"},
        {"s.sets[1].cords = 1;",
         "2,15 unknownInput: s.sets[1].cords is unknown to the type shape; did you mean coords?\n",
         "s.sets[1].tag |= p.out;"},
        {"s.sets[0].tga = 1;", "2,13 unknownInput: s.sets[0].tga is unknown to the type shape; did you mean tag?\n",
         "s.sets[0].tag = \"back\"; s.sets[0].at |= p.out;"},
        {"p.thing.x[3].y = 1;", "2,14 unknownInput: p.thing is unknown to the type paint\n", "p.coat.layer.depth = 1;"},
        // Other inputs of an open type are expected, unless one looks like another that is not set.
        {"a.visibel = 1;", "2,9 unknownInput: a.visibel is unknown to the type place; did you mean visible?\n",
         "a.visibel = 1; a.visible = true;"},
        {"a.box.lowr = 1;", "2,10 unknownInput: a.box.lowr is unknown to the type place; did you mean lower?\n",
         "a.box.loose = 1; a.box.lower = pos3(0 0 0); a.anything.goes = 1; a.bax = 1;"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsValuesOfOtherTypes) {
    const Case cases[] = {
        {"s.extra = 1.5;", "2,7 wrongType: s.extra has the type Real; expected Int\n", "s.extra = 5u;"},
        {"p.coat.amount = \"a\";", "2,13 wrongType: p.coat.amount has the type String; expected Real\n",
         "p.coat.amount = 5;"},
        {"s.sets[0].tag = a;", "2,13 wrongType: s.sets[0].tag has the type Node; expected String\n",
         "s.sets[0].tag |= p.out;"},
        {"s.sets[0].coords = vec3f[0] {};",
         "2,16 wrongType: s.sets[0].coords has the type Vec3f Buffer; expected Vec2f Buffer\n",
         "s.sets[0].coords = vec2f[0] {};"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsValuesOutOfRange) {
    const Case cases[] = {
        {"p.gloss = 1.5;", "2,7 outOfRange: p.gloss is 1.5; expected 0 to 1\n", "p.gloss = 1.0;"},
        {"p.gloss = -1.0;", "2,7 outOfRange: p.gloss is -1; expected 0 to 1\n", "p.gloss = 0.0;"},
        {"p.ramp = float[1] {nan};", "2,6 outOfRange: p.ramp is nan; expected -1 to inf\n", "p.ramp = float[1] {inf};"},
        {"p.hue = rgba(0 0.5 -0.5 1);", "2,5 outOfRange: p.hue is -0.5; expected at least 0\n",
         "p.hue = rgba(0 0.5 9 1);"},
        {"p.steps = 11;", "2,7 outOfRange: p.steps is 11; expected at most 10\n", "p.steps = -9;"},
        {"p.size = 0u;", "2,6 outOfRange: p.size is 0; expected at least 1\n", "p.size = 5u;"},
        {"p.ramp = float[3] {0.1 -1.5 -2};", "2,6 outOfRange: p.ramp is -1.5; expected -1 to inf\n",
         "p.ramp = float[3] {0.1 -1 1e30};"},
        {"p.ramp = int16[2] {3 -5};", "2,6 outOfRange: p.ramp is -5; expected -1 to inf\n",
         "p.ramp = int16[2] {3 -1};"},
        {"p.levels[0] = 1; p.levels[1] = 4;", "2,28 outOfRange: p.levels[1] is 4; expected at most 3\n",
         "p.levels[0] = 1; p.levels[1] = 3;"},
        {"p.coat.amount = -0.5;", "2,13 outOfRange: p.coat.amount is -0.5; expected at least 0\n",
         "p.coat.amount = 0.5;"},
        {"s.extra = 11;", "2,7 outOfRange: s.extra is 11; expected at most 10\n", "s.extra = 10;"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsStringsThatAreNotListed) {
    const Case cases[] = {
        {"p.mode = \"shinny\";",
         "2,6 notListed: p.mode is \"shinny\"; expected \"flat\" or \"shiny\"; did you mean shiny?\n",
         "p.mode = \"shiny\";"},
        {"p.mode = \"x\"; p.mode = \"y\";", "2,20 notListed: p.mode is \"y\"; expected \"flat\" or \"shiny\"\n",
         "p.mode = \"x\"; p.mode = \"\";"},
        {"p.digit = \"ten\";",
         "2,7 notListed: p.digit is \"ten\"; expected \"0\", \"1\", \"2\", \"3\", \"4\", \"5\", \"6\", \"7\" or "
         "others\n",
         "p.digit = \"9\";"},
        {"s.sets[0].tag = \"side\";", "2,13 notListed: s.sets[0].tag is \"side\"; expected \"front\" or \"back\"\n",
         "s.sets[0].tag = \"back\";"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsLinksToOtherNodes) {
    const Case cases[] = {
        {"s.surface |= a.out;", "2,9 wrongNode: s.surface leads to a of type place; expected paint\n",
         "s.surface |= p.out;"},
        {"a.up = s;", "2,4 wrongNode: a.up leads to s of type shape; expected place\n", "a.up = b;"},
        {"a.down[0] = s; a.down[1] = p;",
         "2,24 wrongNode: a.down[1] leads to p of type paint; expected place or shape\n",
         "a.down[0] = s; a.down[1] = null;"},
        // Nothing is known of types that are not in the catalogue.
        {"a.up = p;", "2,4 wrongNode: a.up leads to p of type paint; expected place\n", "define own; own o; a.up = o;"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsIndicesOutOfBounds) {
    const std::string points = "s.points = vec3f[2] {0 0 0 1 1 1};\n";
    const struct {
        const char* wrong;
        const char* findings;
        const char* right;
    } cases[] = {
        {"s.tris = vec3u[2] {0 1 1 0 2 3};", "3,6 badIndex: s.tris holds the index 2, but points has 2 elements\n",
         "s.tris = vec3u[2] {0 1 1 0 0 0};"},
        {"s.tris = int32[1] {-1};", "3,6 badIndex: s.tris holds the index -1, but points has 2 elements\n",
         "s.tris = byte[1] {1};"},
        {"s.tris = float[1] {-1};", "3,6 badIndex: s.tris holds the index -1, but points has 2 elements\n",
         "s.tris = float[1] {-0};"},
        {"s.tris = float[2] {1 0.5};", "3,6 badIndex: s.tris holds the index 0.5, but points has 2 elements\n",
         "s.tris = float[2] {1 0};"},
        {"s.tris = float[2] {1 nan};", "3,6 badIndex: s.tris holds the index nan, but points has 2 elements\n",
         "s.tris = float[2] {1 0};"},
        {"s.tris = uint64[1] {18446744073709551615};",
         "3,6 badIndex: s.tris holds the index 18446744073709551615, but points has 2 elements\n",
         "s.tris = uint64[1] {0};"},
        {"s.sets[1].coords = vec2f[9] {}; s.sets[0].at = int32[4] {0 1 0 0}; s.sets[0].coords = vec2f[1] {0 0};",
         "3,44 badIndex: s.sets[0].at holds the index 1, but sets[].coords has 1 element\n",
         "s.sets[1].coords = vec2f[2] {0 0 0 0}; s.sets[0].at = int32[4] {0 0 0 0}; s.sets[0].coords = vec2f[1] {0 "
         "0};"},
        {"s.sets[0].at = int32[4] {0 0 0 0};",
         "3,12 badIndex: s.sets[0].at holds the index 0, but sets[].coords has 0 elements\n",
         "s.sets[0].at = int32[4] {0 0 0 0}; s.sets[0].coords |= p.out;"},
        {"s.bones[1] = a; s.bone = uint32[2] {1 2};",
         "3,22 badIndex: s.bone holds the index 2, but bones has 2 elements\n",
         "s.bones[1] = a; s.bone = uint32[2] {1 0};"},
    };
    for (const auto& each : cases) {
        const std::string nodes = "shape s; paint p; place a;\n" + points;
        std::string found = findingsIn(nodes + each.wrong, {.ignored = {"badCount"}});
        EXPECT_EQ(found, each.findings) << each.wrong;
        EXPECT_EQ(findingsIn(nodes + each.right, {.ignored = {"badCount"}}), "") << each.right;
    }
}

TEST_F(SceneCheck, findsCountsThatDoNotAgree) {
    const Case cases[] = {
        {"s.points = vec3f[2] {}; s.normals = vec3f[3] {};",
         "2,33 badCount: s.normals has 3 elements; expected 2 (points)\n",
         "s.points = vec3f[2] {}; s.normals = vec3f[2] {};"},
        {"s.points = vec3f[4] {}; s.tris = vec3u[2] {}; s.normals = vec3f[5] {};",
         "2,55 badCount: s.normals has 5 elements; expected 4 (points) or 6 (numbers(tris))\n",
         "s.points = vec3f[4] {}; s.tris = vec3u[2] {}; s.normals = vec3f[6] {};"},
        {"s.normals = vec3f[1] {};", "2,9 badCount: s.normals has 1 element; expected 0 (points)\n",
         "s.normals = vec3f[0] {};"},
        // The count of what is connected is unknown.
        {"s.normals = vec3f[1] {}; s.points = vec3f[2] {};",
         "2,9 badCount: s.normals has 1 element; expected 2 (points)\n", "s.normals = vec3f[1] {}; s.points |= p.out;"},
        {"s.points = vec3f[4] {}; s.faces = byte[2] {3 4}; s.corners = int32[6] {};",
         "2,58 badCount: s.corners has 6 elements; expected 7 (sum(faces))\n",
         "s.points = vec3f[4] {}; s.faces = byte[2] {3 4}; s.corners = int32[7] {};"},
        {"s.points = vec3f[3] {}; s.sets[0].coords = vec2f[2] {};",
         "2,40 badCount: s.sets[0].coords has 2 elements; expected 3 (points)\n",
         "s.points = vec3f[3] {}; s.sets[0].coords = vec2f[2] {}; s.sets[0].at = int32[6] {};"},
        {"s.points = vec3f[3] {}; s.sets[0].coords = vec2f[3] {}; s.sets[0].at = int32[3] {};",
         "2,68 badCount: s.sets[0].at has 3 elements; expected 6 (points*2)\n",
         "s.points = vec3f[3] {}; s.sets[0].coords = vec2f[3] {}; s.sets[0].at = int32[6] {};"},
        {"s.points = vec3f[3] {}; s.bones[1] = a;", "2,34 badCount: s.bones has 2 elements; expected 3 (points)\n",
         "s.points = vec3f[3] {}; s.bones[2] = a;"},
    };
    for (const Case& each : cases) { // the reader warns of the empty lists
        const std::string nodes = "shape s; paint p; place a;\n";
        EXPECT_EQ(findingsIn(nodes + each.wrong), each.findings) << each.wrong;
        EXPECT_EQ(findingsIn(nodes + each.right), "") << each.right;
    }
}

TEST_F(SceneCheck, findsMissingFiles) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.at("maps"));
    const std::string absolute = folder.at("maps/a.png");
    std::ofstream(absolute) << "a";
    const std::string byAbsolute = "p.image = \"" + absolute + "\";";
    const Case cases[] = {
        {"p.image = \"maps/b.png\";", "2,7 missingFile: the file \"maps/b.png\" of p.image does not exist\n",
         "p.image = \"maps/a.png\";"},
        {"p.image = \"maps\";", "2,7 missingFile: the file \"maps\" of p.image does not exist\n", byAbsolute.c_str()},
        {"p.image = \"maps\\\\b.png\";", "2,7 missingFile: the file \"maps\\b.png\" of p.image does not exist\n",
         "p.image = \"maps\\\\a.png\";"},
        {"p.image = \"C:/b.png\";", "2,7 missingFile: the file \"C:/b.png\" of p.image does not exist\n",
         "p.image = \"https://example.org/b.png\";"},
        {"p.image = \"b\"; p.bytes = byte[0] {};", "2,7 missingFile: the file \"b\" of p.image does not exist\n",
         "p.image = \"b\"; p.bytes = byte[1] {1};"},
        {"p.image = \"b\";", "2,7 missingFile: the file \"b\" of p.image does not exist\n",
         "p.image = \"b\"; p.bytes |= p.out;"},
        {"p.images[0] = \"maps/a.png\"; p.images[1] = \"b\";",
         "2,39 missingFile: the file \"b\" of p.images[1] does not exist\n",
         "p.images[0] = \"maps/a.png\"; p.images[1] = \"\";"},
    };
    expect(cases, {.folder = folder.path()});
}

TEST_F(SceneCheck, findsCyclesOfTheHierarchy) {
    const Case cases[] = {
        {"a.up = a;", "2,4 cycle: the hierarchy of nodes has a cycle: a > a\n", "a.what = a;"},
        {"a.up = b; b.up = c; c.up = a;", "2,4 cycle: the hierarchy of nodes has a cycle: a > c > b > a\n",
         "a.up = b; b.up = c; c.what = a;"},
        {"a.down[0] = b; b.down[0] = c; c.down[0] = b;", "2,39 cycle: the hierarchy of nodes has a cycle: b > c > b\n",
         "a.down[0] = b; a.down[1] = c; b.down[0] = c; c.up = b; b.up = a;"},
        {"a.up |= b.out; b.up |= a.out;", "2,4 cycle: the hierarchy of nodes has a cycle: a > b > a\n",
         "a.up |= b.out; b.down[0] = a;"},
    };
    expect(cases);
}

TEST_F(SceneCheck, findsTwoCyclesThroughOneNode) {
    EXPECT_EQ(findingsIn("place a; place b; place c;\na.down[0] = b; a.down[1] = c; b.down[0] = a; c.down[0] = a;"),
              "2,39 cycle: the hierarchy of nodes has a cycle: a > b > a\n"
              "2,54 cycle: the hierarchy of nodes has a cycle: a > c > a\n");
}

TEST_F(SceneCheck, survivesDeepHierarchiesAndInputs) {
    std::string text = "place n0;\n";
    constexpr int depth = 100000;
    for (int i = 1; i <= depth; ++i)
        text += "place n" + std::to_string(i) + "; n" + std::to_string(i) + ".up = n" + std::to_string(i - 1) + ";\n";
    EXPECT_EQ(findingsIn(text), "");
    text += "n0.up = n" + std::to_string(depth) + ";";
    EXPECT_EQ(findingsIn(text), "100002,5 cycle: the hierarchy of nodes has a cycle: n0 > n1 > n2 > n3 > n4 > n5 > n6 "
                                "> n7 > ... (100001 nodes) > n0\n");
    std::string nested = "place a; a.boxx";
    for (int i = 0; i < 20000; ++i)
        nested += ".x";
    EXPECT_EQ(findingsIn(nested + " = 1;").substr(0, 77),
              "1,40015 unknownInput: a.boxx is unknown to the type place; did you mean box?\n");
}

TEST_F(SceneCheck, findsUnusedNodesOnlyIfPedantic) {
    const Case cases[] = {
        {"paint q; s.surface |= p.out;", "2,7 unused: nothing uses node q\n",
         "paint q; s.surface |= p.out; a.any[2].thing = q;"},
        {"s.surface |= p.out; define d;", "2,28 unused: nothing uses node d\n",
         "s.surface |= p.out; define d; d e; d f;"},
        {"paint q; q.coat.amount |= q.out; s.surface |= p.out;", "2,7 unused: nothing uses node q\n",
         "s.surface |= p.out;"},
    };
    expect(std::span(cases).first(2), {.isPedantic = true});
    EXPECT_EQ(findingsIn(std::string("shape s; paint p;\n") + cases[2].wrong, {.isPedantic = true}), cases[2].findings);
    EXPECT_EQ(findingsIn("paint p;"), "");
}

TEST_F(SceneCheck, leavesOutWhatIsIgnored) {
    const std::string text = "paint p; p.gloss = 2; p.glos = 1; shap s;";
    EXPECT_EQ(findingsIn(text, {.ignored = {"outOfRange", "unknownType"}}),
              "1,28 unknownInput: p.glos is unknown to the type paint\n");
    const std::vector<std::string> all = check::kindNames();
    EXPECT_EQ(findingsIn(text, {.ignored = {all.begin(), all.end()}}), "");
}

// Objects may get the addresses of those that were removed.
TEST_F(SceneCheck, takesNoPositionFromRemovedNodes) {
    constexpr int count = 50;
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "shape r" + std::to_string(i) + "; r" + std::to_string(i) + ".norms = 1;\n";
    for (int i = 0; i < count; ++i)
        text += "remove r" + std::to_string(i) + ";\n";
    text += "define shape; shape.norms = 1;\n";
    std::string expected = "101,25 unknownInput: shape.norms is unknown to the type shape\n";
    for (int i = 0; i < count; ++i) {
        const std::string name = "t" + std::to_string(i);
        text += "shape " + name + ";\n";
        expected += std::to_string(102 + i) + ',' + std::to_string(6 + name.size()) + " unknownInput: " + name +
                    ".norms is unknown to the type shape\n";
    }
    EXPECT_EQ(findingsIn(text), expected);
}

TEST_F(SceneCheck, reportsInTheOrderOfTheText) {
    EXPECT_EQ(findingsIn("place a; zzz y;\na.up = a; paint p; p.wax = 1;\np.gloss = 2;"),
              "1,14 unknownType: the type zzz of node y is not in the catalogue\n"
              "2,4 cycle: the hierarchy of nodes has a cycle: a > a\n"
              "2,24 unknownInput: p.wax is unknown to the type paint\n"
              "3,7 outOfRange: p.gloss is 2; expected 0 to 1\n");
}

TEST_F(SceneCheck, shortensLongNames) {
    const std::string name(5000, 'x');
    const std::string found = findingsIn("paint p; p." + name + " = 1;");
    EXPECT_LT(found.size(), 300U);
    EXPECT_NE(found.find("xxx... is unknown to the type paint"), std::string::npos);
}

TEST_F(SceneCheck, cutsNoCharacterInTwo) {
    for (const char* character : {"\u00E4", "\u20AC", "\U0001F600"})
        for (std::size_t before = 0; before < 4; ++before) {
            std::string text(before, 'x');
            while (text.size() < 300)
                text += character;
            const std::string found = findingsIn("paint p; p.mode = \"" + text + "\";");
            EXPECT_TRUE(isUtf8(found)) << found;
            EXPECT_NE(found.find(character + std::string("...")), std::string::npos) << found;
        }
}

} // namespace vrn::test

// How much memory reading takes, whatever the text.
#include "impl/Reader.h"
#include "tests/faults/Allocations.h"
#include "tests/support/Reading.h"

#include <functional>

namespace vrn::test {

namespace {

struct Shape {
    const char* name;
    std::function<std::string(int)> unit; // the ith
    int count;
    std::string head = "t n;";
    std::string tail{};
    double beyond = 4; // bytes for each byte of the text, at the most, that reading takes besides the scene
};

std::string number(int i) { return std::to_string(i); }

const std::vector<Shape> shapes = {
    {"small statements", [](int i) { return ".a" + number(i) + "=1;"; }, 200000, "t n:"},
    {"one statement again and again", [](int) { return ".a=1;"; }, 300000, "t n:"},
    {"nodes", [](int i) { return "t " + number(i).insert(0, "a") + ";"; }, 200000},
    {"definitions", [](int i) { return "define a" + number(i) + ";"; }, 100000, "t n;", {}, 8},
    {"removed nodes", [](int i) { return "t a;a.x" + number(i) + "=1;remove a;"; }, 100000},
    {"comments", [](int) { return "#\n"; }, 1000000, "t n;", {}, 4.5},
    {"elements", [](int) { return ".a[*]=1;"; }, 200000, "t n:"},
    {"vectors", [](int i) { return ".a" + number(i) + "=vec3(1 2 3);"; }, 100000, "t n:"},
    {"matrices", [](int i) { return ".a" + number(i) + "=mat4(1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16);"; }, 50000,
     "t n:"},
    {"texts", [](int i) { return ".a" + number(i) + "=\"a text of more than sixteen letters\";"; }, 100000, "t n:"},
    {"connections", [](int i) { return ".a" + number(i) + "|=n.o;"; }, 200000, "t n:", {}, 6.5},
    {"references", [](int i) { return ".a" + number(i) + "=n;"; }, 200000, "t n:", {}, 8.5},
    {"outputs", [](int i) { return ".a" + number(i) + "|=n.o" + number(i) + ";"; }, 100000, "t n:", {}, 5},
    {"a deep path", [](int i) { return ".m" + number(i); }, 200000, "t n; n", "=1;", 13},
    {"deep arrays", [](int) { return "[0]"; }, 200000, "t n; n.a", "=1;", 16},
    {"arrays of arrays", [](int i) { return ".a[" + number(i / 10) + "][" + number(i % 10) + "]=1;"; }, 200000, "t n:"},
    {"one list of reals", [](int) { return "0.5 "; }, 1000000, "t n; n.a=float[1000000]{", "};"},
    {"one nested list", [](int) { return "{1}"; }, 1000000, "t n; n.a=byte[1000000]{", "};"},
    {"one list that nobody wants", [](int) { return "1,"; }, 1000000, "t n; n.a={", "};"},
    {"one list in parentheses", [](int) { return "1,"; }, 1000000, "t n; n.a=vec3(", ");"},
    {"one string", [](int) { return "text"; }, 1000000, "t n; n.a=\"", "\";"},
    {"one string of escapes", [](int) { return "\\n"; }, 1000000, "t n; n.a=\"", "\";", 5.5},
    {"one comment", [](int) { return "text"; }, 1000000, "#"},
    {"one name", [](int) { return "name"; }, 1000000, "t ", ";"},
    {"one number", [](int) { return "1234"; }, 1000000, "t n; n.a=", ";"},
    {"one index", [](int) { return "0"; }, 1000000, "t n; n.a[", "]=1;", 5.5},
    {"brackets that do not end", [](int) { return "[["; }, 1000000, "t n; n.a"},
    {"a string that does not end", [](int) { return "text"; }, 1000000, "t n; n.a=\""},
    {"a list that does not end", [](int) { return "(1,"; }, 1000000, "t n; n.a=("},
    {"a payload", [](int) { return "00"; }, 1000000, "t n; n.a=byte[4]{.", "};"},
    {"blanks", [](int) { return "\xE2\x80\x83 \n"; }, 300000},
    {"errors about values", [](int) { return ".a=1;.a=\"x\";"; }, 100000, "t n:"},
    {"buffers of one number", [](int i) { return ".a" + number(i) + "=byte[1]{1};"; }, 100000, "t n:"},
};

String textOf(const Shape& shape) {
    std::string text = shape.head;
    for (int i = 0; i < shape.count; ++i)
        text += shape.unit(i);
    return std::string_view(text += shape.tail);
}

struct Usage {
    double beyond; // the most while reading, without what the scene holds afterwards
    double scene;
};

// For each byte of a text.
template <class Read> Usage usageOf(std::size_t size, Read read) {
    const ScopedLogSink sink([](const LogRecord&) {});
    Scene scene;
    const std::size_t before = liveBytes();
    forgetPeak();
    (void)read(scene);
    const auto bytes = static_cast<double>(size);
    return {static_cast<double>(peakBytes() - liveBytes()) / bytes, static_cast<double>(liveBytes() - before) / bytes};
}

// What a text may hold at the most in a scene: an element that is an array of one element, `[0]`.
constexpr double densestScene = 66;

} // namespace

TEST(Memory, isThatOfTheSceneAndLittleMore) {
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(shape.name);
        const String text = textOf(shape);
        const Usage fromMemory = usageOf(text.len(), [&](Scene& scene) { return parseString(&scene, text); });
        const Usage fromFile =
            usageOf(text.len(), [&](Scene& scene) { return parseVrn(&scene, File::fromMemory(text), true); });
        EXPECT_LT(fromMemory.beyond, shape.beyond);
        EXPECT_LT(fromFile.beyond, shape.beyond);
        EXPECT_LT(fromMemory.scene, densestScene);
        EXPECT_NEAR(fromFile.scene, fromMemory.scene, 0.01);
    }
}

// The few letters that ask for the most, and no second time.
TEST(Memory, ofElementsThatNobodyNamesIsLimited) {
    const String text = "t n; n.a[16777215] = 1; n.b[1] = 1; n.c[1] = 1; n.d[16777215] = 1;";
    std::size_t errors = 0;
    const ScopedLogSink sink([&](const LogRecord&) { ++errors; });
    Scene scene;
    const std::size_t before = liveBytes();
    forgetPeak();
    EXPECT_FALSE(parseString(&scene, text));
    EXPECT_EQ(errors, 1U);
    EXPECT_EQ(scene.findNode("n")->input("a")->size(), 16777216U);
    EXPECT_EQ(scene.findNode("n")->input("b")->size(), 2U);
    EXPECT_EQ(scene.findNode("n")->input("c")->size(), 0U);
    EXPECT_LT(peakBytes() - before, std::size_t(1700) << 20);
}

} // namespace vrn::test

// Upper bounds for the memory that reading takes.
#include "impl/Reader.h"
#include "tests/faults/Allocations.h"
#include "tests/support/Reading.h"
#include "tests/support/Sources.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

namespace vrn::test {

namespace {

struct Shape {
    const char* name;
    std::function<std::string(int)> unit; // the ith unit
    int count;
    std::string head = "t n;";
    std::string tail{};
    double beyond = 4; // maximum bytes per byte of input while reading, without the scene
};

std::string number(int i) { return std::to_string(i); }

// The counts are just above powers of two, where vectors that double have just grown.
const std::vector<Shape> shapes = {
    {"small statements", [](int i) { return ".a" + number(i) + "=1;"; }, 262145, "t n:"},
    {"one statement again and again", [](int) { return ".a=1;"; }, 300000, "t n:"},
    {"nodes", [](int i) { return "t " + number(i).insert(0, "a") + ";"; }, 262145},
    {"definitions", [](int i) { return "define a" + number(i) + ";"; }, 131073, "t n;", {}, 9},
    {"removed nodes", [](int i) { return "t a;a.x" + number(i) + "=1;remove a;"; }, 131073},
    {"comments", [](int) { return "#\n"; }, 1048577, "t n;", {}, 8.1},
    {"elements", [](int) { return ".a[*]=1;"; }, 262145, "t n:"},
    {"vectors", [](int i) { return ".a" + number(i) + "=vec3(1 2 3);"; }, 131073, "t n:"},
    {"matrices", [](int i) { return ".a" + number(i) + "=mat4(1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16);"; }, 65537,
     "t n:"},
    {"texts", [](int i) { return ".a" + number(i) + "=\"a text of more than sixteen letters\";"; }, 131073, "t n:"},
    {"connections", [](int i) { return ".a" + number(i) + "|=n.o;"; }, 262145, "t n:", {}, 9.5},
    {"references", [](int i) { return ".a" + number(i) + "=n;"; }, 262145, "t n:", {}, 12.2},
    {"outputs", [](int i) { return ".a" + number(i) + "|=n.o" + number(i) + ";"; }, 131073, "t n:", {}, 8.9},
    {"a deep path", [](int) { return ".a"; }, 262145, "t n; n", "=1;", 67},
    {"a deep path of a link", [](int) { return ".a"; }, 262145, "t n; n.a|=n", ";", 98.5},
    {"a deep path with an error", [](int) { return ".a"; }, 262145, "t n; n.a", "=;", 98.5},
    {"references of elements", [](int) { return ".a[*]=n;"; }, 262145, "t n:", {}, 16.1},
    {"connections of elements", [](int) { return ".a[*]|=n.o;"; }, 262145, "t n:", {}, 11.7},
    {"deep arrays", [](int) { return "[0]"; }, 262145, "t n; n.a", "=1;", 23},
    {"arrays of arrays", [](int i) { return ".a[" + number(i / 10) + "][" + number(i % 10) + "]=1;"; }, 262145, "t n:"},
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
    {"errors about values", [](int) { return ".a=1;.a=\"x\";"; }, 131073, "t n:"},
    {"buffers of one number", [](int i) { return ".a" + number(i) + "=byte[1]{1};"; }, 131073, "t n:"},
};

String textOf(const Shape& shape) {
    std::string text = shape.head;
    for (int i = 0; i < shape.count; ++i)
        text += shape.unit(i);
    return std::string_view(text += shape.tail);
}

struct Usage {
    double beyond; // peak while reading, without the final scene
    double scene;
};

// Per byte of input.
template <class Read> Usage usageOf(std::size_t size, Read read) {
    const ScopedLogSink sink([](const LogRecord&) {});
    releaseSpareMemory(); // of the scenes before
    Scene scene;
    const std::size_t before = liveBytes();
    resetPeak();
    (void)read(scene);
    const auto inputBytes = static_cast<double>(size);
    return {static_cast<double>(peakBytes() - liveBytes()) / inputBytes,
            static_cast<double>(liveBytes() - before) / inputBytes};
}

// Bytes of scene per byte of input in the worst case: an object with one member, `.a`.
constexpr double densestScene = 116;

} // namespace

// Blocks count as a whole wherever they are, and without what glibc leaves unused after them.
TEST(Memory, isCountedAsItIs) {
    constexpr std::size_t hugePage = std::size_t(2) << 20;
    constexpr std::size_t rounding = 64;
    for (const std::size_t alignment : {std::size_t(16), hugePage / 64, hugePage})
        for (const std::size_t size : {hugePage / 64, hugePage / 8, hugePage, hugePage * 4 / 3, hugePage * 2}) {
            SCOPED_TRACE(std::to_string(size) + " at multiples of " + std::to_string(alignment));
            std::array<void*, 5> blocks{};
            const std::size_t before = liveBytes();
            for (void*& block : blocks)
                ASSERT_EQ(posix_memalign(&block, alignment, size), 0);
            const std::size_t counted = liveBytes() - before;
            EXPECT_GE(counted, blocks.size() * size);
            EXPECT_LE(counted, blocks.size() * (size + rounding));
            std::ranges::for_each(blocks, std::free);
            EXPECT_EQ(liveBytes(), before);
        }
}

TEST(Memory, isThatOfTheSceneAndLittleMore) {
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(shape.name);
        const String text = textOf(shape);
        const Usage fromMemory = usageOf(text.len(), [&](Scene& scene) { return parseString(&scene, text); });
        const Usage fromFile =
            usageOf(text.len(), [&](Scene& scene) { return parseVrn(&scene, File::fromMemory(text), true); });
        const std::string copy(text.view());
        const Usage fromBlocks = usageOf(text.len(), [&](Scene& scene) {
            return parseVrn(&scene, File::fromSource(std::make_unique<Blocks>(copy, 4096), 4096), true);
        });
        EXPECT_LT(fromMemory.beyond, shape.beyond);
        EXPECT_LT(fromFile.beyond, shape.beyond);
        EXPECT_LT(fromBlocks.beyond, shape.beyond);
        EXPECT_LT(fromMemory.scene, densestScene);
        EXPECT_NEAR(fromFile.scene, fromMemory.scene, 0.01);
    }
}

// A short input that creates the maximum number of elements, and fails to create more.
TEST(Memory, ofElementsThatNobodyNamesIsLimited) {
    const String text = "t n; n.a[1677721] = 1; n.b[1] = 1; n.c[2] = 1;";
    std::size_t errors = 0;
    const ScopedLogSink sink([&](const LogRecord&) { ++errors; });
    Scene scene;
    scene.setLimits({.maxImplicitElements = 1677722});
    const std::size_t before = liveBytes();
    resetPeak();
    EXPECT_FALSE(parseString(&scene, text));
    EXPECT_EQ(errors, 1U);
    EXPECT_EQ(scene.findNode("n")->input("a")->size(), 1677722U);
    EXPECT_EQ(scene.findNode("n")->input("b")->size(), 2U);
    EXPECT_EQ(scene.findNode("n")->input("c")->size(), 0U);
    EXPECT_LT(peakBytes() - before, std::size_t(176) << 20);
}

} // namespace vrn::test

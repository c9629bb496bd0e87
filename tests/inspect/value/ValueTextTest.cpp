// The texts and the JSON of one value of each kind.
#include "inspect/value/ValueText.h"

#include "inspect/value/ValueJson.h"
#include "tests/support/Reading.h"

namespace vrn::test {

using namespace vrn::inspect;

namespace {

std::string jsonOf(const Input& input) {
    std::string text;
    const TextSink sink = [&](std::string_view piece) { text += piece; };
    writeJsonLine(sink, [&](JsonLine& json) { writeJsonValue(json, input); });
    return text;
}

} // namespace

TEST(ValueText, describesEachKindOfValue) {
    const struct {
        const char* statement;
        const char* type;
        const char* value;
        const char* description;
        const char* json;
    } cases[] = {
        {"n.x = -3;", "Int", "-3", "Int = -3", "-3\n"},
        {"n.x = 3u;", "UInt", "3", "UInt = 3", "3\n"},
        {"n.x = 0.1;", "Real", "0.1", "Real = 0.1", "0.1\n"},
        {"n.x = true;", "Bool", "true", "Bool = true", "true\n"},
        {"n.x = pos3(1 2.5 -3);", "Pos3", "1 2.5 -3", "Pos3 = 1 2.5 -3", "[1,2.5,-3]\n"},
        {"n.x = \"a\\\"\\n\";", "String", "a\"\n", "String = \"a\\\"\\n\"", "\"a\\\"\\n\"\n"},
        {"n.x = m;", "Node", "m", "Node -> m", "\"m\"\n"},
        {"n.x = null;", "Node", "null", "Node = null", "null\n"},
        {"n.x |= m.out;", "Null", "m.out", "Null -> m.out", "\"m.out\"\n"},
        {"n.x = 1; n.x |= m.out;", "Int", "1", "Int = 1 -> m.out", "1\n"},
        {"n.x = vec2f[2] {1 2 3 4};", "vec2f[2]", "vec2f[2]", "vec2f[2]", "[[1,2],[3,4]]\n"},
        {"n.x = byte[2] {1 255};", "byte[2]", "byte[2]", "byte[2]", "[1,255]\n"},
        {"n.x[1] = 5;", "Int[2]", "Int[2]", "Int[2]", "[0,5]\n"},
        {"n.x = [];", "Array[0]", "Array[0]", "Array[0]", "[]\n"},
        {"n.x.y = 5;", "Object", "{1 member}", "{1 member}", "{\"y\":5}\n"},
        {"n.x.y[0].z = 5; n.x.w = 1;", "Object", "{2 members}", "{2 members}", "{\"y\":[{\"z\":5}],\"w\":1}\n"},
    };
    for (const auto& c : cases) {
        const Reading reading = readText(std::string_view(std::string("t n; t m; ") + c.statement));
        const Input& input = *reading.input("n.x");
        EXPECT_EQ(typeText(input), c.type) << c.statement;
        EXPECT_EQ(valueText(input), c.value) << c.statement;
        EXPECT_EQ(describe(input, Style(false)), c.description) << c.statement;
        EXPECT_EQ(jsonOf(input), c.json) << c.statement;
    }
}

TEST(ValueText, coloursTypesAndLinks) {
    const Reading reading = readText("t n; t m; n.x = 1; n.x |= m.out;");
    EXPECT_EQ(describe(*reading.input("n.x"), Style(true)), "\x1B[36mInt\x1B[0m = 1 -> \x1B[33mm.out\x1B[0m");
}

TEST(ValueText, cutsAndEscapesLongTexts) {
    EXPECT_EQ(escapedShort("a\x1B[0m"), "a\\x1B[0m");
    EXPECT_EQ(quotedShort("a\\\"\x1B"), "\"a\\\\\\\"\\x1B\"");
    EXPECT_EQ(quotedShort(std::string(100, 'x')), '"' + std::string(60, 'x') + "...\"");
}

TEST(ValueText, namesTheTypesOfNodes) {
    const Reading reading = readText("define d; d n;");
    EXPECT_EQ(typeText(reading.node("d")), "definition");
    EXPECT_EQ(typeText(reading.node("n")), "d");
}

TEST(ValueJson, writesPartsOfABuffer) {
    const Reading reading = readText("t n; n.x = vec2f[3] {1 2 3 4 5 6};");
    std::string text;
    const TextSink sink = [&](std::string_view piece) { text += piece; };
    const AttrData& buffer = reading.value("n.x");
    writeJsonLine(sink, [&](JsonLine& json) { writeJsonElements(json, buffer, 1, 2); });
    writeJsonLine(sink, [&](JsonLine& json) { writeJsonElement(json, buffer, 2); });
    writeJsonLine(sink, [&](JsonLine& json) { writeJsonElements(json, buffer, 3, 0); });
    EXPECT_EQ(text, "[[3,4],[5,6]]\n[5,6]\n[]\n");
}

} // namespace vrn::test

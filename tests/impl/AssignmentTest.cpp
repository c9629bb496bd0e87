#include "tests/support/Reading.h"

namespace vrn::test {

TEST(AssignInfo, shortensItsValueInMessages) {
    AssignInfo info;
    info.valueToken.text = "12345678901234567890";
    EXPECT_EQ(info.valueString(), "12345678901234567890");
    info.valueToken.text = "123456789012345678901";
    EXPECT_EQ(info.valueString(), "12345678901234567890...");
    info.valueToken.text = "int32";
    info.bufferHeadToken.type = Token::Type::Brackets;
    EXPECT_EQ(info.valueString(), "int32[]");
    info.bufferHeadToken.type = Token::Type::Invalid;
    EXPECT_EQ(info.valueString(), "int32");
    info.valueToken.text = "1234567890123456789";
    info.bufferHeadToken.type = Token::Type::Id;
    EXPECT_EQ(info.valueString(), "1234567890123456789[...");
}

TEST(AssignInfo, startsEmptyAndCopies) {
    const AssignInfo empty;
    EXPECT_TRUE(empty.path.isEmpty());
    EXPECT_TRUE(empty.source.isEmpty());
    EXPECT_EQ(empty.valueToken.type, Token::Type::Eof);
    EXPECT_EQ(empty.valueToken.line, 0);
    EXPECT_FALSE(empty.isScalar || empty.isBuffer || empty.isConnection || empty.isReference);
    EXPECT_EQ(empty.data.type(), AttrType::Null);
    AssignInfo info;
    info.data = AttrData::string("value");
    info.path.push({Token::Type::Id, "a", 1, 1});
    AssignInfo copy = info;
    AssignInfo moved = std::move(info);
    copy.data = AttrData();
    EXPECT_STREQ(moved.data.asString(), "value");
    EXPECT_EQ(moved.path[0].text, "a");
    moved.isScalar = true;
    moved.refToken = {Token::Type::Id, "b", 1, 1};
    moved.clear();
    EXPECT_TRUE(moved.path.isEmpty());
    EXPECT_FALSE(moved.isScalar);
    EXPECT_EQ(moved.refToken.type, Token::Type::Eof);
    EXPECT_EQ(moved.data.type(), AttrType::Null);
}

TEST(Assignment, throwsErrorsThatEndTheParse) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {".x = 1;", "PARSE ERROR (1,7): 'with' node not set (input: .x)."},
        {".x[0].y = 1;", "PARSE ERROR (1,12): 'with' node not set (input: .x[0].y)."},
        {"a.x = 1;", "PARSE ERROR (1,8): node 'a.x' not found ."},
        {"t a; a.x[1 2] = 1;", "PARSE ERROR (1,18): invalid input array index: 1 2."},
        {"t a; a.x[] = 1;", "PARSE ERROR (1,15): invalid input array index: ."},
        {"t a; a.x[ * ] = 1;", "PARSE ERROR (1,18): invalid input array index:  * ."},
        {"t a; a.x[**] = 1;", "PARSE ERROR (1,17): invalid input array index: **."},
        {"t a; a.x[16777216] = 1;", "PARSE ERROR (1,23): invalid input array index: 16777216."},
        {"t a; a.x[99999999999999999999] = 1;", "PARSE ERROR (1,35): invalid input array index: 99999999999999999999."},
        // An input inside the path that has another type.
        {"t a; a.x = 1; a.x.y = 2;", "TYPE ERROR (1,24): cannot assign Object to Int @ a.x."},
        {"t a; a.x = 1.0; a.x[0] = 2;", "TYPE ERROR (1,27): cannot assign Int[] to Real @ a.x."},
        {"t a; a.x = 1.0; a.x[0] = a;", "TYPE ERROR (1,27): cannot assign <unknown>[] to Real @ a.x."},
        {"t a; a.x = 1.0; a.x[0][0] = 1;", "TYPE ERROR (1,30): cannot assign Array[] to Real @ a.x."},
        {"t a; a.x = 1.0; a.x[0].y = 1;", "TYPE ERROR (1,29): cannot assign Object[] to Real @ a.x."},
        {"t a; a.b = byte[0] {}; a.b[0] = 1;", "TYPE ERROR (1,34): cannot assign Array to Buffer @ a.b."},
        {"t a; a.b = byte[0] {}; a.b.c = 1;", "TYPE ERROR (1,33): cannot assign Object to Buffer @ a.b."},
        {"t a; a.b[0] = byte[0] {}; a.b[0][0] = 1;", "TYPE ERROR (1,40): cannot assign Array to Array @ a.b."},
        {"t a; a.o.x = 1; a.o[0] = 1;", "TYPE ERROR (1,27): cannot assign Int[] to Object @ a.o."},
        {"t a; a.o[0] = 1; a.o.x = 1;", "TYPE ERROR (1,27): cannot assign Object to Array @ a.o."},
        // An array of another element type.
        {"t a; a.x[0] = 1; a.x[1] = 2.5;", "TYPE ERROR (1,30): cannot assign Real to Array @ a.x."},
        {"t a; a.x[0] = 1; a.x[1] = 2u;", "TYPE ERROR (1,29): cannot assign UInt to Array @ a.x."},
        {"t a; a.x[0].y = 1; a.x[1] = 1;", "TYPE ERROR (1,30): cannot assign Int to Array @ a.x."},
        {"t a; a.o.x[0][0] = 1; a.o.x[0][1] = true;", "TYPE ERROR (1,41): cannot assign Bool to Array @ a.o.x[0]."},
    };
    for (const auto& c : cases) {
        const Reading r = readText(c.text);
        EXPECT_FALSE(r.isOk) << c.text;
        ASSERT_EQ(r.log.size(), 1U) << c.text;
        EXPECT_EQ(r.log[0].text, c.error) << c.text;
    }
}

TEST(Assignment, createsMissingInputs) {
    const Reading r =
        readText("t a; a.x = 1; a.o.p.q = true; a.l[1] = 2.5; a.m[0][1] = \"s\"; a.n[*].k = 3u; a.e = []; a.f = {};");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.x")->type(), AttrType::Int);
    EXPECT_EQ(r.input("a.o")->type(), AttrType::Object);
    EXPECT_TRUE(r.value("a.o.p.q").asBool());
    EXPECT_EQ(r.input("a.l")->elementType(), AttrType::Real);
    EXPECT_EQ(r.value("a.l[0]").asReal(), 0);
    EXPECT_EQ(r.value("a.l[1]").asReal(), 2.5);
    EXPECT_EQ(r.input("a.m")->elementType(), AttrType::Array);
    EXPECT_EQ(r.input("a.m[0]")->elementType(), AttrType::String);
    EXPECT_STREQ(r.value("a.m[0][1]").asString(), "s");
    EXPECT_EQ(r.input("a.n")->elementType(), AttrType::Object);
    EXPECT_EQ(r.value("a.n[0].k").asUInt(), 3U);
    EXPECT_EQ(r.input("a.e")->elementType(), AttrType::Null);
    EXPECT_EQ(r.input("a.f")->type(), AttrType::Object);
    EXPECT_EQ(r.input("a.m[0][1]")->label(), "a.m[0][1]");
    EXPECT_EQ(r.input("a.n[0].k")->label(), "a.n[0].k");
    EXPECT_EQ(r.input("a.n[0]")->name(), "0");
}

TEST(Assignment, growsArrays) {
    Reading r = readText("t a; a.x[0] = 1; a.x[1] = 2; a.x[2] = 3; a.x[*] = 4;");
    EXPECT_EQ(r.input("a.x")->size(), 4U);
    EXPECT_EQ(r.value("a.x[3]").asInt(), 4);
    readMore(r, "a.y[2] = 1; a.y[5] = 2; a.y[ 1 ] = 3;");
    EXPECT_EQ(r.input("a.y")->size(), 6U);
    EXPECT_EQ(r.value("a.y[1]").asInt(), 3);
    EXPECT_EQ(r.value("a.y[4]").asInt(), 0);
    EXPECT_EQ(r.value("a.y[5]").asInt(), 2);
}

TEST(Assignment, leavesARefusedArrayUnchanged) {
    Reading r = readText("t a; a.x[0] = 1; a.x[7] = 2.5;");
    EXPECT_EQ(r.input("a.x")->size(), 1U) << "a conflict of types is found before the array grows";
    r.scene->setLimits({.maxArrayElements = 3});
    readMore(r, "a.x[2] = 1; a.x[*] = 4;");
    EXPECT_EQ(r.log[0].text, "PARSE ERROR (1,23): invalid input array index: *.");
    EXPECT_EQ(r.input("a.x")->size(), 3U);
}

// The index is parsed, the element type is set, the array grows: an error leaves the effects of the earlier steps.
TEST(Assignment, checksIndexTypeAndGrowthInThisOrder) {
    const struct {
        const char* text;
        const char* log;
        const char* array;
        AttrType elementType;
        u64 size;
    } cases[] = {
        {"a.x[0] = 1; a.x[16777216] = \"s\";", "TYPE ERROR (1,37): cannot assign String to Array @ a.x.", "a.x",
         AttrType::Int, 1},
        {"a.x[0] = 1; a.x[ * ] = \"s\";", "PARSE ERROR (1,32): invalid input array index:  * .", "a.x", AttrType::Int,
         1},
        {"a.x[0][99999999999] = 1;", "PARSE ERROR (1,29): invalid input array index: 99999999999.", "a.x[0]",
         AttrType::Int, 0},
        {"a.x = []; a.x[16777216] = 1;", "PARSE ERROR (1,33): invalid input array index: 16777216.", "a.x",
         AttrType::Int, 0},
    };
    for (const auto& c : cases) {
        const Reading r = readText("t a; " + String(c.text));
        ASSERT_EQ(r.log.size(), 1U) << c.text;
        EXPECT_EQ(r.log[0].text, c.log);
        EXPECT_EQ(r.input(c.array)->elementType(), c.elementType) << c.text;
        EXPECT_EQ(r.input(c.array)->size(), c.size) << c.text;
    }
}

TEST(Assignment, turnsLinkedElementsOfAnArrayOfArraysIntoArrays) {
    Reading r = readText("n n; n.x[0] |= n.a; n.x[1] |= n.b; n.x[3] = [];");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("n.x")->size(), 4U);
    for (const char* element : {"n.x[0]", "n.x[1]", "n.x[2]", "n.x[3]"}) {
        EXPECT_EQ(r.input(element)->type(), AttrType::Array) << element;
        EXPECT_EQ(r.input(element)->elementType(), AttrType::Null) << element;
    }
    EXPECT_EQ(r.input("n.x[0]")->connection()->label(), "n.a");
    EXPECT_EQ(r.input("n.x[1]")->connection()->label(), "n.b");
    r = readText("n a; a.x[0] |= a.o; a.x[1] = []; a.x[0] = [];");
    EXPECT_EQ(r.log, Log{});
    r = readText("n a; a.x[0] |= a.o; a.x[1][0] = 5;"); // writes into an element, not an element
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.x[0]")->type(), AttrType::Null);
}

// The scene decides whether to write a value of another type.
TEST(Assignment, checksNoEnumerationForAValueThatIsNotWritten) {
    Reading r = readText("t a; a.x = 5;");
    r.input("a.x")->setEnumeration({"one", "two"});
    readMore(r, "a.x = \"three\";");
    EXPECT_EQ(r.log, (Log{error(1, 14, "TYPE ERROR (1,14): expected Int @ a.x but found String.")}));
    EXPECT_EQ(r.value("a.x").asInt(), 5);
}

TEST(Assignment, limitsImplicitElements) {
    Reading r;
    r.scene->setLimits({.maxImplicitElements = 4});
    readMore(r, "t a; a.x[2] = 1; a.y[*] = 1; a.y[2] = 2; a.z[0] = 1; a.x[1] = 1; a.z[3] = 1; a.z[2] = 1;");
    EXPECT_EQ(r.log, (Log{error(1, 76, "PARSE ERROR (1,76): invalid input array index: 3.")}));
    EXPECT_EQ(r.input("a.y")->size(), 3U);
    EXPECT_EQ(r.input("a.z")->size(), 1U);
    readMore(r, "a.z[3] = 1;"); // another text
    EXPECT_EQ(r.log, Log{});
}

TEST(Assignment, writesExistingElementsRegardlessOfTheLimit) {
    Reading r = readText("t a; a.x[4] = 1;");
    r.scene->setLimits({.maxArrayElements = 2});
    readMore(r, "a.x[4] = 2;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.value("a.x[4]").asInt(), 2);
}

TEST(Assignment, setsTheTypeOfUntypedInputsInAPath) {
    Reading r = readText("t a; a.n |= null; a.m |= null; a.n.x = 1; a.m[1] = 2;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.n")->type(), AttrType::Object);
    EXPECT_EQ(r.input("a.m")->elementType(), AttrType::Int);
    readMore(r, "a.k[1] |= null; a.k[0].x = 5;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.k")->elementType(), AttrType::Object);
    EXPECT_EQ(r.input("a.k[1]")->type(), AttrType::Null);
}

TEST(Assignment, writesAValueToANullInputWithAnError) {
    const Reading r = readText("t a; a.x |= null; a.x = 5;");
    EXPECT_TRUE(r.isOk);
    EXPECT_EQ(r.log, (Log{error(1, 26, "TYPE ERROR (1,26): expected Null @ a.x but found Int.")}));
    EXPECT_EQ(r.value("a.x").asInt(), 5);
}

TEST(Assignment, logsWrongTypesAndContinues) {
    const Reading r = readText("t a; a.v = vec2(0 0); a.v = vec3(1 2 3);\na.w = vec3(0 0 0); a.w = vec2(4 5);\n"
                               "a.b = true; a.b = 1.5; a.b = 1;\na.s = \"x\"; a.s = 5;");
    EXPECT_TRUE(r.isOk);
    EXPECT_EQ(r.log, (Log{warning(1, 40, "TYPE WARNING (1,40): narrowing Vec3 to Vec2 @ a.v."),
                          error(3, 22, "TYPE ERROR (3,22): expected Bool @ a.b but found Real."),
                          warning(3, 31, "TYPE WARNING (3,31): narrowing Int to Bool @ a.b."),
                          error(4, 19, "TYPE ERROR (4,19): expected String @ a.s but found Int.")}));
    EXPECT_EQ(r.value("a.v").components()[1], 2);
    EXPECT_EQ(r.value("a.w").components()[1], 5);
    EXPECT_TRUE(r.value("a.b").asBool());
    EXPECT_STREQ(r.value("a.s").asString(), "x") << "the scene refuses values that do not fit";
}

TEST(Assignment, keepsTheElementTypeOfBuffers) {
    const Reading r = readText("t a; a.b = double[1] {1};\na.b = float[1] {2};\na.b = 5;\na.b = double[2] {3 4};");
    EXPECT_EQ(r.log, (Log{error(2, 19, "TYPE ERROR (2,19): expected Buffer @ a.b but found Float."),
                          error(3, 8, "TYPE ERROR (3,8): expected Buffer @ a.b but found Int.")}));
    EXPECT_EQ(r.value("a.b").elements<double>()[1], 4);
}

TEST(Assignment, setsTheElementTypeOfSiblingBuffers) {
    Reading r = readText("t a; a.b[2] = float[1] {5};");
    for (const char* path : {"a.b[0]", "a.b[1]", "a.b[2]"})
        EXPECT_EQ(r.input(path)->dataType(), DataType::Float) << path;
    EXPECT_EQ(r.value("a.b[0]").count(), 0U);
    readMore(r, "a.b[4] = double[1] {5};");
    EXPECT_EQ(r.input("a.b[1]")->dataType(), DataType::Float) << "what has a type keeps it";
    EXPECT_EQ(r.input("a.b[3]")->dataType(), DataType::Double);
    readMore(r, "a.b[0] = float[1] {1}; a.b[0] = double[1] {1};");
    EXPECT_EQ(r.log[0].text, "TYPE ERROR (1,46): expected Buffer @ a.b[0] but found Double.");
}

TEST(Assignment, skipsElementsThatCannotBeTyped) {
    Reading r = readText("t a; a.b[0] = a; a.c[0] = a;");
    readMore(r, "a.b[*] = float[1] {5}; a.c[1][0] = 5;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.b[0]")->nodeValue(), &r.node("a"));
    EXPECT_EQ(r.input("a.b")->untypedElements(), 0U) << "or every write would look at all elements";
    EXPECT_EQ(r.input("a.c")->untypedElements(), 0U);
}

TEST(Assignment, movesBuffersWithoutACopy) {
    ParserOn p("= float[1000] {1};");
    AssignInfo info;
    const ScopedLogSink silent([](const LogRecord&) {});
    ASSERT_TRUE(p->value(info));
    const std::byte* block = info.data.bytes().data();
    Input* input = p.scene.createNode("t", "a")->createInput("x", AttrType::Buffer);
    input->assign(std::move(info.data));
    EXPECT_EQ(input->value().bytes().data(), block);
}

TEST(Links, areMadeAtTheEndOfTheText) {
    const Reading r = readText("t a; a.in |= b.out; a.ref = b; a.idx | = b.o; t b;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.in")->connection()->label(), "b.out");
    EXPECT_EQ(r.input("a.idx")->connection()->label(), "b.o");
    EXPECT_EQ(r.input("a.ref")->nodeValue(), &r.node("b"));
    EXPECT_EQ(r.input("a.ref")->type(), AttrType::Node);
    EXPECT_EQ(r.input("a.in")->type(), AttrType::Null);
}

TEST(Links, areUndoneByNull) {
    Reading r = readText("t a; a.in |= a.out; a.ref = a;");
    readMore(r, "a.in |= Null; a.ref = NULL;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.in")->connection(), nullptr);
    EXPECT_EQ(r.input("a.ref")->nodeValue(), nullptr);
}

TEST(Links, onlyTheLastOneOfAnInputIsMade) {
    const Reading r = readText("t a; a.in |= a.first; a.in |= nobody.x; a.in |= a.second; a.r = nobody; a.r = a;");
    EXPECT_EQ(r.log, Log{});
    EXPECT_EQ(r.input("a.in")->connection()->label(), "a.second");
    EXPECT_EQ(r.node("a").outputs().size(), 1U);
    EXPECT_EQ(r.input("a.r")->nodeValue(), &r.node("a"));
}

// A link is replaced immediately, a few statements later, and at the end of the text, while more and more of them wait.
TEST(Links, onlyTheLastOneOfEachOfManyInputsIsMade) {
    std::string text = "t a;\n";
    const auto link = [&](int i, const char* source) { text += "a.in" + std::to_string(i) + " |= " + source + ";\n"; };
    for (int i = 0; i < 200; ++i) {
        link(i, "nobody.x");
        if (i % 3 == 0)
            link(i, "a.first");
        if (i % 7 == 0)
            link(i / 2, "a.second");
    }
    for (int i = 0; i < 200; ++i)
        link(i, "a.last");
    const Reading r = readText(text.c_str());
    EXPECT_EQ(r.log, Log{});
    ASSERT_EQ(r.node("a").outputs().size(), 1U);
    EXPECT_EQ(r.node("a").outputs()[0]->connectionCount(), 200U);
}

TEST(Links, thatCannotBeMadeAreLogged) {
    const Reading r = readText("t a; a.x = 5;\na.in |= a.out.x;\na.i2 |= .out;\na.i3 |= c.out;\na.i4[1] = m;\n"
                               "a.i5 |= a.b[0];\na.x = a;");
    EXPECT_TRUE(r.isOk);
    EXPECT_EQ(r.log, (Log{warning(2, 15, "Invalid output: a.out.x."), warning(3, 12, "Invalid output: .out."),
                          warning(4, 13, "Cannot connect nonexistent node c to a.i3."),
                          warning(5, 11, "Cannot assign nonexistent node m to a.i4[1].")}));
    EXPECT_EQ(r.input("a.in")->connection(), nullptr);
    EXPECT_EQ(r.input("a.i5")->connection()->name(), "b[0]");
    EXPECT_EQ(r.input("a.x")->type(), AttrType::Int) << "a reference to a node is no Int";
}

TEST(Links, acceptPathsWithALeadingDot) {
    const Reading r = readText("t a; t b; a.x |= .b.out; a.y |= .b[0].out; a.z |= b.out[1];");
    EXPECT_EQ(r.input("a.x")->connection()->label(), "b.out") << "an empty part does not count";
    EXPECT_EQ(r.input("a.z")->connection()->label(), "b.out[1]");
    EXPECT_EQ(r.log, (Log{warning(1, 41, "Cannot connect nonexistent node b[0] to a.y.")}));
}

TEST(Links, toMissingOutputsAreLogged) {
    Reading r;
    r.scene->setStrictOutputs(true);
    readMore(r, "t a; a.in |= a.out;");
    EXPECT_EQ(r.log, (Log{warning(1, 18, "Cannot connect nonexistent output a.out to a.in.")}));
}

TEST(Links, needTheirWholeStatement) {
    const struct {
        const char* text;
        Log log;
    } cases[] = {
        {"t a; a.in | a.out;", {error(1, 13, "BAD TOKEN (1,13): expected '=', found 'a'.")}},
        {"t a; a.in |= 5;", {error(1, 14, "BAD TOKEN (1,14): expected '(null|path)', found '5'.")}},
        {"t a; a.in |= a;", {error(1, 14, "BAD TOKEN (1,14): expected '(null|path)', found 'a'.")}},
        {"t a; a.in |= a.out", {error(1, 18, "BAD TOKEN (1,18): expected ';', found 'EOF'.")}},
        {"t a; a.in |= null.x;", {error(1, 18, "BAD TOKEN (1,18): expected ';', found '.'.")}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(readText(c.text).log, c.log) << c.text;
}

TEST(Links, ofRemovedInputsAreDropped) {
    const Reading r = readText("t a; t b; a.in |= b.out; a.ref = b; a.l[1] |= b.out; a.l = []; b.x = a; remove a;");
    EXPECT_EQ(r.log, (Log{warning(1, 70, "Cannot assign nonexistent node a to b.x.")}));
    EXPECT_TRUE(r.node("b").outputs().empty());
}

TEST(Links, ofATextWithAnErrorReleaseTheirInputs) {
    Reading r = readText("t a; a.in |= a.out; a.ref = a; remove a; oops");
    EXPECT_FALSE(r.isOk);
    EXPECT_EQ(r.scene->nodeCount(), 0U);
}

TEST(Links, keepTheOrderOfTheText) {
    std::string text = "t a;";
    for (int i = 0; i < 200; ++i)
        text += "\na.x" + std::to_string(i) + " = nobody" + std::to_string(i) + ";";
    const Reading r = readText(String(std::string_view(text)));
    ASSERT_EQ(r.log.size(), 200U);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(r.log[static_cast<std::size_t>(i)].position.line, i + 2);
}

} // namespace vrn::test

#include "scene/CatalogueJson.h"
#include "tests/support/Reading.h"

#include <cmath>

namespace vrn::test {

static std::shared_ptr<const Catalogue> catalogue(std::string_view json) {
    return std::make_shared<const Catalogue>(readCatalogue(json));
}

static const char* const cameraTypes = R"({"types": {"camera": {
    "inputs": {
        "fov": {"default": 45, "type": "Real"},
        "near": {"type": "Real", "default": "-inf"},
        "on": {"type": "Bool", "default": true},
        "id": {"type": "Int", "default": -9223372036854775808},
        "mask": {"type": "UInt", "default": 18446744073709551615},
        "one": {"type": "UInt", "default": 1},
        "eye": {"type": "Pos3", "default": [1, 2.5, "nan"]},
        "view": {"type": "Mat4"},
        "mode": {"type": "String", "default": "a", "enum": ["a", "b"]},
        "curve": {"type": "Buffer", "dataType": "Vec2f"},
        "parts": {"type": "Array", "elementType": "Object"},
        "target": {"type": "Node", "linkOnly": true},
        "serial": {"type": "Int", "locked": true},
        "open": {"type": "Null"}
    },
    "outputs": ["image", "depth"],
    "renamedInputs": {"fovy": "fov"},
    "renamedOutputs": {"result": "image"}}}})";

TEST(Catalogue, givesNewNodesTheirInputs) {
    Reading r = readText("camera c; other o;", catalogue(cameraTypes));
    std::string order;
    for (const Input* input : std::as_const(r.node("c")).inputs())
        order += std::string(input->name().view()) + " ";
    EXPECT_EQ(order, "fov near on id mask one eye view mode curve parts target serial open ");
    EXPECT_EQ(r.value("c.fov").asReal(), 45);
    EXPECT_EQ(r.value("c.near").asReal(), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(r.value("c.on").asBool());
    EXPECT_EQ(r.value("c.id").asInt(), INT64_MIN);
    EXPECT_EQ(r.value("c.mask").asUInt(), UINT64_MAX);
    EXPECT_EQ(r.value("c.one").asUInt(), 1U);
    EXPECT_EQ(r.value("c.eye").components()[1], 2.5);
    EXPECT_TRUE(std::isnan(r.value("c.eye").components()[2]));
    EXPECT_EQ(r.value("c.view").components().size(), 16U);
    EXPECT_STREQ(r.value("c.mode").asString(), "a");
    EXPECT_EQ(r.input("c.mode")->enumeration().size(), 2U);
    EXPECT_EQ(r.input("c.curve")->dataType(), DataType::Vec2f);
    EXPECT_EQ(r.input("c.parts")->elementType(), AttrType::Object);
    EXPECT_TRUE(r.input("c.target")->isLinkOnly());
    EXPECT_TRUE(r.input("c.serial")->isLocked());
    EXPECT_EQ(r.input("c.open")->type(), AttrType::Null);
    EXPECT_TRUE(r.node("o").inputs().empty());
}

TEST(Catalogue, guardsWhatItMarks) {
    Reading r = readText("camera c; c.serial = 5; c.target = 1; c.target = c; c.mode = \"z\"; c.extra = 1;\n"
                         "c.curve = vec3f[1] {1 2 3}; c.curve = vec2f[1] {1 2}; c.serial = int32[1] {1};",
                         catalogue(cameraTypes));
    EXPECT_EQ(r.log, (Log{error(1, 23, "TYPE ERROR (1,23): expected Int @ c.serial but found 5."),
                          error(1, 37, "TYPE ERROR (1,37): expected Node @ c.target but found 1."),
                          warning(1, 65, "ENUM WARNING (1,65): setting non-existent enum value 'z' @ c.mode."),
                          error(2, 27, "TYPE ERROR (2,27): expected Buffer @ c.curve but found Vec3f."),
                          error(2, 78, "TYPE ERROR (2,78): expected Int @ c.serial but found int32[].")}));
    EXPECT_EQ(r.value("c.serial").asInt(), 0);
    EXPECT_EQ(r.input("c.target")->nodeValue(), &r.node("c"));
    EXPECT_STREQ(r.value("c.mode").asString(), "z") << "the value stays written";
    EXPECT_EQ(r.value("c.extra").asInt(), 1) << "inputs of other names are as the text gives them";
    EXPECT_EQ(r.value("c.curve").elements<float>()[1], 2);
}

TEST(Catalogue, settlesTheOutputsOfItsTypes) {
    Reading r = readText("camera c; t o; o.a |= c.image; o.b |= c.sound; o.c |= o.any; o.d |= c.result;",
                         catalogue(cameraTypes));
    EXPECT_EQ(r.log, (Log{warning(1, 45, "Cannot connect nonexistent output c.sound to o.b.")}));
    EXPECT_EQ(r.input("o.a")->connection()->label(), "c.image");
    EXPECT_EQ(r.input("o.d")->connection()->label(), "c.image") << "an old name";
    EXPECT_EQ(r.input("o.c")->connection()->label(), "o.any");
}

TEST(Catalogue, mapsOldNamesForItsOwnScenesOnly) {
    Reading with = readText("camera c; c.fovy = 30.0; t o; o.fovy = 1.0;", catalogue(cameraTypes));
    EXPECT_EQ(with.value("c.fov").asReal(), 30);
    EXPECT_EQ(with.input("c.fovy"), nullptr);
    EXPECT_NE(with.input("o.fovy"), nullptr);
    Reading without = readText("camera c; c.fovy = 30.0;");
    EXPECT_NE(without.input("c.fovy"), nullptr);
    EXPECT_EQ(updateInputName("camera", "fovy"), "fovy") << "outside of any parse";
    const NameMapScope scope(with.scene.get());
    EXPECT_EQ(updateInputName("camera", "fovy"), "fov");
    EXPECT_EQ(updateOutputName("camera", "result"), "image");
    EXPECT_EQ(updateOutputName("camera", "image"), "image");
    EXPECT_EQ(updateOutputName("nothing", "result"), "result");
}

TEST(Catalogue, mapsTheNamesOfMembersToo) {
    Reading r = readText("camera c; c.lens.fovy = 2.0; c.parts[0].fovy = 1.0;", catalogue(cameraTypes));
    EXPECT_EQ(r.value("c.lens.fov").asReal(), 2);
    EXPECT_EQ(r.value("c.parts[0].fov").asReal(), 1);
}

TEST(Catalogue, addsToWhatADefinitionGives) {
    Reading r = readText("define camera; camera.fov = 30.0; camera.own = 1; camera c;", catalogue(cameraTypes));
    EXPECT_EQ(r.value("camera.near").asReal(), -std::numeric_limits<double>::infinity())
        << "a definition of a catalogued name gets the catalogue's inputs";
    EXPECT_EQ(r.value("c.fov").asReal(), 30);
    EXPECT_EQ(r.value("c.own").asInt(), 1);
    EXPECT_TRUE(r.input("c.serial")->isLocked()) << "copies keep marks";
    EXPECT_EQ(r.input("c.mode")->enumeration().size(), 2U) << "and enumerations";
    EXPECT_EQ(r.node("c").outputs().size(), 2U);
}

// A definition gets the marks of its catalogued type, and a node created from it copies them.
TEST(Catalogue, marksWhatDefinitionsGive) {
    const auto types = catalogue(R"({"types": {"lamp": {"inputs": {
        "target": {"type": "Node", "linkOnly": true},
        "power": {"type": "Int", "default": 7, "linkOnly": true},
        "serial": {"type": "Int", "default": 8, "locked": true}}}}})");
    for (const bool hasCatalogue : {true, false}) {
        Reading r = readText("define lamp;", types);
        r.scene->setCatalogue(hasCatalogue ? types : nullptr); // the node copies the marks without a catalogue, too
        readMore(r, "lamp n;\nn.power = 5;\nn.serial = 5;\nn.target = 5;\nlamp.power = 5;\nn.target = n;");
        EXPECT_EQ(r.log, (Log{error(2, 12, "TYPE ERROR (2,12): expected Int @ n.power but found 5."),
                              error(3, 13, "TYPE ERROR (3,13): expected Int @ n.serial but found 5."),
                              error(4, 13, "TYPE ERROR (4,13): expected Node @ n.target but found 5."),
                              error(5, 15, "TYPE ERROR (5,15): expected Int @ lamp.power but found 5.")}));
        for (const char* node : {"lamp", "n"}) {
            SCOPED_TRACE(node);
            EXPECT_TRUE(r.node(node).input("target")->isLinkOnly());
            EXPECT_TRUE(r.node(node).input("power")->isLinkOnly());
            EXPECT_FALSE(r.node(node).input("power")->isLocked());
            EXPECT_TRUE(r.node(node).input("serial")->isLocked());
            EXPECT_FALSE(r.node(node).input("serial")->isLinkOnly());
            EXPECT_EQ(r.node(node).input("power")->value().asInt(), 7);
            EXPECT_EQ(r.node(node).input("serial")->value().asInt(), 8);
        }
        EXPECT_EQ(r.input("n.target")->nodeValue(), &r.node("n")) << "links are not refused";
    }
}

// Copies include the marks of members and elements, which only a program can set.
TEST(Catalogue, marksMembersAndElementsOfCopies) {
    Reading r;
    Node* definition = r.scene->defineNode("d");
    Input* member = definition->createInput("object", AttrType::Object)->createInput("member", AttrType::Int);
    Input* element = definition->createArray("array", AttrType::Int)->appendElement();
    member->setLinkOnly(true);
    element->setLocked(true);
    readMore(r, "d n;\nn.object.member = 5;\nn.array[0] = 5;\nn.array[1] = 5;");
    EXPECT_EQ(r.log, (Log{error(2, 20, "TYPE ERROR (2,20): expected Int @ n.object.member but found 5."),
                          error(3, 15, "TYPE ERROR (3,15): expected Int @ n.array[0] but found 5.")}));
    EXPECT_TRUE(r.input("n.object.member")->isLinkOnly());
    EXPECT_FALSE(r.input("n.object.member")->isLocked());
    EXPECT_TRUE(r.input("n.array[0]")->isLocked());
    EXPECT_FALSE(r.input("n.array[0]")->isLinkOnly());
    EXPECT_EQ(r.value("n.object.member").asInt(), 0);
    EXPECT_EQ(r.value("n.array[0]").asInt(), 0);
    EXPECT_EQ(r.value("n.array[1]").asInt(), 5);
}

TEST(Catalogue, isMadeByCallsToo) {
    NodeType light("light");
    light.addInput({.name = "power", .type = AttrType::Real, .defaultValue = AttrData::integer(3)});
    Catalogue types;
    types.add(light);
    light.addOutput("beam");
    types.add(light);
    EXPECT_EQ(types.size(), 1U);
    EXPECT_EQ(types.find("light")->outputs().size(), 1U) << "the later type replaces the earlier one";
    EXPECT_EQ(types.find("lamp"), nullptr);
    EXPECT_EQ(types.find("light")->inputs()[0].initialValue().asReal(), 0)
        << "a default of another type counts for none";
}

TEST(Catalogue, takesNumbersOfAnyLength) {
    const std::string zeros(400, '0');
    const struct {
        std::string number;
        double value;
    } cases[] = {
        {"-0", -0.0},
        {"45", 45},
        {"-45.5e-1", -4.55},
        {"0.1", 0.1},
        {"18446744073709551616", 18446744073709551616.0},
        {"-9223372036854775809", -9223372036854775809.0},
        {"0." + zeros + zeros, 0},
        {"1." + zeros, 1},
        {"0." + zeros.substr(0, 70) + "1" + zeros, 1e-71},
        {"1" + zeros.substr(0, 300), 1e300},
        {"88" + zeros.substr(0, 51) + "8" + zeros.substr(0, 19), 8.8e72},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"4.9e-324", 4.9e-324},
        {"1e-999", 0},
    };
    for (const auto& c : cases) {
        const Catalogue types =
            readCatalogue(R"({"types": {"t": {"inputs": {"x": {"type": "Real", "default": )" + c.number + "}}}}}");
        const double value = types.find("t")->inputs()[0].initialValue().asReal();
        EXPECT_EQ(value, c.value) << c.number;
        EXPECT_EQ(std::signbit(value), std::signbit(c.value)) << c.number;
    }
}

TEST(Catalogue, refusesWhatBreaksItsRules) {
    const struct {
        const char* json;
        i32 line;
        i32 column;
        const char* text;
    } cases[] = {
        {"", 1, 1, "expected a JSON value, found nothing"},
        {"{\"types\": {}} x", 1, 15, "expected the end of the file after the JSON value"},
        {"{", 1, 2, "expected a key between double quotes"},
        {"{\"types\"}", 1, 9, "expected ':' after the key"},
        {"{\"types\": {} \"x\"", 1, 14, "expected ',' or '}'"},
        {"{\"types\": [1 2]}", 1, 14, "expected ',' or ']'"},
        {"{\"types\": nul}", 1, 14, "expected a JSON value"},
        {"{\"types\": 1e999}", 1, 11, "expected a number that a double can hold"},
        {"{\"types\": -1.8e308}", 1, 11, "expected a number that a double can hold"},
        {"{\"types\": 1.}", 1, 13, "expected a digit"},
        {"{\"types\": \"\\q\"}", 1, 12, "expected a valid escape in the string"},
        {"{\"types\": \"", 1, 12, "expected the string to end"},
        {R"({"types": {"": {}}})", 1, 13, "expected a name that is not empty and holds no NUL character"},
        {R"({"types": {"a\u0000b": {}}})", 1, 21, "expected a name that is not empty and holds no NUL character"},
        {R"({"types": {"a": {"outputs": ["\u0000"]}}})", 1, 37,
         "expected the name of an output without NUL characters"},
        {"[]", 1, 1, "expected an object with the key \"types\""},
        {"{\"kinds\": {}}", 1, 8, "unknown key \"kinds\"; expected \"types\""},
        {"{\"types\": 5}", 1, 11, "expected an object of node types by name"},
        {"{\"types\": {\"a\": {}, \"a\": {}}}", 1, 23, "key \"a\" is repeated; expected each key once"},
        {"{\"types\": {\"a\": 1}}", 1, 17, "expected an object that describes a node type"},
        {"{\"types\": {\"a\": {\"x\": 1}}}", 1, 20,
         "unknown key \"x\"; expected \"inputs\", \"outputs\", \"renamedInputs\", \"renamedOutputs\", \"open\" or "
         "\"root\""},
        {R"({"types": {"a": {"open": 1}}})", 1, 26, "expected true or false"},
        {R"({"$schema": 1})", 1, 13, "expected the address of a schema"},
        {"{\"types\": {\"a\":\n {\"inputs\": {\n\"i\": {}}}}}", 3, 6, "expected a \"type\" for input \"i\""},
        {R"({"types": {"a": {"inputs": {"i": 1}}}})", 1, 34, "expected an object that describes an input"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Float"}}}}})", 1, 49,
         "unknown type \"Float\"; expected the name of an attribute type such as \"Real\""},
        {R"({"types": {"a": {"inputs": {"i": {"type": 1}}}}})", 1, 43, "expected the name of an attribute type"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Int", "default": 1.5}}}}})", 1, 63,
         "expected a signed 64-bit integer"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "UInt", "default": -1}}}}})", 1, 63,
         "expected an unsigned 64-bit integer"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Real", "default": "1"}}}}})", 1, 64,
         "expected a number, \"inf\", \"-inf\" or \"nan\""},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Bool", "default": 1}}}}})", 1, 62, "expected true or false"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "String", "default": 1}}}}})", 1, 64, "expected a string"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Vec3", "default": [1, 2]}}}}})", 1, 62,
         "expected an array of 3 numbers for Vec3"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Node", "default": null}}}}})", 1, 59,
         "expected no \"default\": a Node has no literal"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Real", "enum": ["a"]}}}}})", 1, 56,
         "\"enum\" belongs to inputs of type String"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Real", "dataType": "Float"}}}}})", 1, 60,
         "\"dataType\" belongs to inputs of type Buffer"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Real", "elementType": "Int"}}}}})", 1, 63,
         "\"elementType\" belongs to inputs of type Array"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Buffer", "dataType": "vec3f"}}}}})", 1, 71,
         "unknown type \"vec3f\"; expected the name of an element type such as \"Vec3f\""},
        {R"({"types": {"a": {"inputs": {"i": {"type": "String", "enum": ["a", 1]}}}}})", 1, 67, "expected a string"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "String", "enum": "a"}}}}})", 1, 63,
         "expected an array of strings"},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Real", "color": 1}}}}})", 1, 57,
         "unknown key \"color\"; expected \"type\", \"default\", \"enum\", \"dataType\", \"elementType\", \"locked\", "
         "\"linkOnly\", \"members\", \"optional\", \"accepts\", \"min\", \"max\", \"indexes\", \"countOf\", \"file\", "
         "\"embeddedIn\" or \"hierarchy\""},
        {R"({"types": {"a": {"inputs": {"i": {"type": "Real", "locked": 1}}}}})", 1, 61, "expected true or false"},
        {R"({"types": {"a": {"outputs": ["o", "o"]}}})", 1, 37, "output \"o\" is repeated; expected each name once"},
        {R"({"types": {"a": {"outputs": "o"}}})", 1, 31, "expected an array of output names"},
        {R"({"types": {"a": {"renamedInputs": {"o": 5}}}})", 1, 41, "expected the current name of an input"},
        {R"({"types": {"a": {"renamedOutputs": 5}}})", 1, 36, "expected an object of current output names by old ones"},
        {"{\"types\": {\"a\\u001b\": 1}}", 1, 23, "expected an object that describes a node type"},
        {"{\"types\": {\"\xC4\": {}}}", 1, 13, "expected UTF-8"},
    };
    for (const auto& c : cases) {
        try {
            (void)readCatalogue(c.json);
            ADD_FAILURE() << c.json << " was taken";
        } catch (const CatalogueError& e) {
            EXPECT_STREQ(e.what(), c.text) << c.json;
            EXPECT_EQ(e.position(), (TextPosition{c.line, c.column}))
                << c.json << " " << e.position().line << "," << e.position().column;
        }
    }
}

// The rules for checks, in an input of a type that also has `points`, `many[]` and `many[].coords`.
TEST(Catalogue, refusesRulesThatCannotApply) {
    const struct {
        const char* input;
        const char* text;
    } cases[] = {
        {R"("type": "Int", "optional": 1)", "expected true or false"},
        {R"("type": "Node", "accepts": 1)", "expected a string or an array of strings"},
        {R"("type": "Node", "accepts": [1])", "expected a string"},
        {R"("type": "String", "min": 1)", "\"min\" belongs to inputs with numbers, not to a String"},
        {R"("type": "Real", "max": "x")", "expected a number, \"inf\", \"-inf\" or \"nan\""},
        {R"("type": "Real", "max": "nan")", "expected a number that is not nan"},
        {R"("type": "Real", "min": 2, "max": 1)", "expected a \"min\" that does not exceed the \"max\" of input \"i\""},
        {R"("type": "Real", "indexes": "points")", "\"indexes\" belongs to inputs of type Buffer"},
        {R"("type": "Real", "countOf": "points")", "\"countOf\" belongs to inputs of type Buffer or Array"},
        {R"("type": "Int", "file": true)", "\"file\" belongs to inputs of type String or Array"},
        {R"("type": "String", "embeddedIn": "points")",
         "\"embeddedIn\" belongs to inputs with \"file\": true, which input \"i\" is not"},
        {R"("type": "Node", "hierarchy": "child")", "expected \"parent\" or \"children\""},
        {R"("type": "Buffer", "members": {"a": {"type": "Int"}})",
         "\"members\" belongs to an Object or an Array of Objects, which input \"i\" is not"},
        {R"("type": "Object", "members": {"a": {"type": "Float"}})",
         "unknown type \"Float\"; expected the name of an attribute type such as \"Real\""},
        {R"("type": "Buffer", "indexes": "points[")",
         "malformed path \"points[\"; expected a path such as \"uvsets[].coords\""},
        {R"("type": "Buffer", "indexes": "")", "malformed path \"\"; expected a path such as \"uvsets[].coords\""},
        {R"("type": "Buffer", "indexes": "point")",
         "\"point\" leads to no input; type \"a\" declares no \"point\" there"},
        {R"("type": "Buffer", "countOf": ["points", "many.count"])",
         "\"many.count\" leads to no input; type \"a\" declares no \"count\" there"},
        {R"("type": "Buffer", "countOf": "many[].coords")",
         "\"many[].coords\" enters an array that does not contain the input"},
        {R"("type": "Buffer", "countOf": "points*0")", "expected a positive integer after the * of \"points*0\""},
        {R"("type": "Object", "members": {"a": {"type": "Buffer", "indexes": "b"}})",
         "\"b\" leads to no input; type \"a\" declares no \"b\" there"},
    };
    for (const auto& c : cases) {
        try {
            (void)readCatalogue(R"({"types": {"a": {"inputs": {"points": {"type": "Buffer"}, "many": {"type": "Array",
                "elementType": "Object", "members": {"coords": {"type": "Buffer"}}}, "i": {)" +
                                std::string(c.input) + "}}}}}");
            ADD_FAILURE() << c.input << " was taken";
        } catch (const CatalogueError& e) {
            EXPECT_STREQ(e.what(), c.text) << c.input;
        }
    }
}

TEST(Catalogue, holdsTheRulesForChecks) {
    const auto types = catalogue(R"json({"$schema": "catalogue.schema.json", "types": {"a": {
        "open": true, "root": true, "inputs": {
            "points": {"type": "Buffer", "min": -1, "max": "inf"},
            "extra": {"type": "Real", "optional": true},
            "sets": {"type": "Array", "elementType": "Object", "members": {
                "coords": {"type": "Buffer", "countOf": ["points", "sum(points)*2", "numbers(sets[].indices)"]},
                "indices": {"type": "Buffer", "indexes": ["sets[].coords", "points"]}}},
            "up": {"type": "Node", "accepts": "a", "hierarchy": "parent"},
            "image": {"type": "String", "file": true, "embeddedIn": "points"}}, "outputs": ["out"]}, "b": {}}})json");
    const NodeType& type = *types->find("a");
    EXPECT_TRUE(type.isOpen() && type.isRoot());
    EXPECT_FALSE(types->find("b")->isOpen() || types->find("b")->isRoot());
    EXPECT_EQ(types->typeNames(), (std::vector<std::string_view>{"a", "b"}));
    const std::vector<InputType>& inputs = type.inputs();
    EXPECT_EQ(inputs[0].minimum, -1);
    EXPECT_EQ(inputs[0].maximum, std::numeric_limits<double>::infinity());
    const std::vector<CountTerm>& terms = inputs[2].members[0].countOf;
    ASSERT_EQ(terms.size(), 3U);
    EXPECT_TRUE(terms[0].of == CountTerm::Of::Elements && terms[0].path == "points" && terms[0].factor == 1);
    EXPECT_TRUE(terms[1].of == CountTerm::Of::Sum && terms[1].path == "points" && terms[1].factor == 2);
    EXPECT_TRUE(terms[2].of == CountTerm::Of::Numbers && terms[2].path == "sets[].indices");
    EXPECT_EQ(terms[1].text, "sum(points)*2");
    EXPECT_EQ(inputs[2].members[1].indexes, (StringVector{"sets[].coords", "points"}));
    EXPECT_EQ(inputs[3].hierarchy, HierarchyRole::Parent);
    EXPECT_EQ(inputs[3].accepts, (StringVector{"a"}));
    EXPECT_TRUE(inputs[4].isFile);
    EXPECT_EQ(inputs[4].embeddedIn, (StringVector{"points"}));

    Reading r = readText("a n; a m; m.extra = 1; m.sets[0].coords = 1; m.up |= n.out;", types);
    EXPECT_EQ(r.log, Log()) << "the rules do not affect reading";
    EXPECT_EQ(r.input("n.extra"), nullptr) << "new nodes do not have optional inputs";
    EXPECT_EQ(r.value("m.extra").type(), AttrType::Int) << "which have the type that the text gives them";
    EXPECT_EQ(r.node("n").inputs().size(), 4U);
}

TEST(Catalogue, refusesWhatStandsBehindANul) { EXPECT_THROW((void)readCatalogue({"{}\0garbage", 10}), CatalogueError); }

TEST(Catalogue, refusesNestingWithoutEnd) {
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_THROW((void)readCatalogue(deep), CatalogueError);
    EXPECT_THROW((void)readCatalogue(std::string(100000, '[')), CatalogueError);
}

} // namespace vrn::test

// Comments, node statements and paths.
#include "tests/support/Reading.h"

namespace vrn::test {

using Type = Token::Type;

TEST(Comment, setsVersionAndTime) {
    const struct {
        const char* text;
        u64 version;
        const char* time;
        Log log;
    } cases[] = {
        {"# version: 2", 2, "", {}},
        {"# time: 2023-01-01 12:00", 1, "2023-01-01 12:00", {}},
        {"# anything else", 1, "", {}},
        {"# version:", 1, "", {warning(1, 10, "Failed to parse VRN version comment: # version:")}},
        {"# version: x", 1, "", {warning(1, 12, "Failed to parse VRN version comment: # version: x")}},
        {"# version: -1", 1, "", {warning(1, 13, "Failed to parse VRN version comment: # version: -1")}},
        {"# Version: 3", 1, "", {}},
        {"# time:", 1, "", {}},
        {"# time:   \t", 1, "", {}},
        {"# version: 2\n# version: 18446744073709551615", UINT64_MAX, "", {}},
        {"# note: version: 3", 1, "", {warning(1, 18, "Failed to parse VRN version comment: # note: version: 3")}},
        {"# version: 4 time: 5", 1, "", {warning(1, 20, "Failed to parse VRN version comment: # version: 4 time: 5")}},
        {"# time: version: 6", 1, "", {warning(1, 18, "Failed to parse VRN version comment: # time: version: 6")}},
        {"# xtime:noon ", 1, "noon", {}},
        {"# version: 0x10", 16, "", {}},
    };
    for (const auto& c : cases) {
        const Reading r = readText(c.text);
        EXPECT_TRUE(r.isOk);
        EXPECT_EQ(r.scene->fileVersion(), c.version) << c.text;
        EXPECT_EQ(r.scene->fileTime(), c.time) << c.text;
        EXPECT_EQ(r.log, c.log) << c.text;
    }
}

TEST(Comment, isKeptAsRead) {
    const Reading r = readText("# b \r\n#a\n  # version: 9 \n#" + String("x\0y", 3));
    EXPECT_EQ(r.scene->fileComments(), (StringVector{"# b ", "#a", "# version: 9 ", String("#x\0y", 4)}));
}

TEST(Comment, isReadOnlyAtACommentToken) {
    ParserOn p("t a;");
    EXPECT_FALSE(p->parseComment());
    EXPECT_EQ(p->current().text, "t");
}

TEST(NodeStatements, areRecognisedByThreeTokens) {
    const struct {
        const char* text;
        const char* recogniser; // the first one, in the order of the statements, that accepts it
    } cases[] = {
        {"remove a;", "remove"},  {"REMOVE a;", "remove"},  {"define a;", "define"},  {"Define m;", "define"},
        {"camera c;", "declare"}, {"camera c:", "declare"}, {"a REMOVE;", "declare"}, {"with a:", "declare"},
        {"with a;", "declare"},   {"remove a:", "declare"}, {"remove a", "none"},     {"define a.", "none"},
        {"camera", "none"},       {"camera 5;", "none"},    {"5 a;", "none"},         {"remove true;", "none"},
        {"with a", "none"},
    };
    for (const auto& c : cases) {
        ParserOn p(c.text);
        RemoveInfo removeInfo;
        DefineInfo defineInfo;
        DeclareInfo declareInfo;
        WithInfo withInfo;
        std::string taken = "none";
        if (p->remove(removeInfo))
            taken = "remove";
        else if (p->define(defineInfo))
            taken = "define";
        else if (p->declare(declareInfo))
            taken = "declare";
        else if (p->with(withInfo))
            taken = "with";
        EXPECT_EQ(taken, c.recogniser) << c.text;
        EXPECT_EQ(p->position() == (TextPosition{0, 0}), taken == "none") << c.text;
        EXPECT_EQ(p->current().type == Type::Eof, taken != "none") << c.text;
    }
}

TEST(NodeStatements, fillTheirRecords) {
    ParserOn p("remove a; define b; camera c: camera d; with e:");
    RemoveInfo removed;
    DefineInfo defined;
    DeclareInfo declared;
    WithInfo with;
    ASSERT_TRUE(p->remove(removed));
    EXPECT_EQ(removed.name.text, "a");
    ASSERT_TRUE(p->define(defined));
    EXPECT_EQ(defined.name.text, "b");
    ASSERT_TRUE(p->declare(declared));
    EXPECT_EQ(declared.type.text, "camera");
    EXPECT_EQ(declared.name.text, "c");
    EXPECT_TRUE(declared.isWith);
    ASSERT_TRUE(p->declare(declared));
    EXPECT_FALSE(declared.isWith);
    ASSERT_TRUE(p->with(with));
    EXPECT_EQ(with.name.text, "e");
}

TEST(NodeStatements, keepAnExistingNodeOfAnyType) {
    const Reading r = readText("camera c; light c; c.x = 1;");
    EXPECT_EQ(r.node("c").type(), "camera");
    EXPECT_EQ(r.log, Log{});
}

TEST(NodeStatements, makeANodeCurrentOnlyWithAColon) {
    const Reading r = readText("camera c1: .x = 1; camera c2; .y = 2; camera c2: .z = 3; with c1: .w = 4;");
    EXPECT_NE(r.input("c1.y"), nullptr);
    EXPECT_NE(r.input("c2.z"), nullptr);
    EXPECT_NE(r.input("c1.w"), nullptr) << "a with is a declaration of an existing node";
}

TEST(NodeStatements, createANodeOfTypeWith) {
    const Reading r = readText("with nobody: .x = 1;");
    EXPECT_EQ(r.node("nobody").type(), "with");
    EXPECT_NE(r.input("nobody.x"), nullptr);
}

TEST(NodeStatements, defineTwiceAppendsTwice) {
    ParserOn p("define m; define m; t n; define n;");
    EXPECT_TRUE(p->parseDefine());
    EXPECT_TRUE(p->parseDefine());
    EXPECT_EQ(p->definedNodes.size(), 2U);
    EXPECT_EQ(p->definedNodes[0], p->definedNodes[1]);
    EXPECT_TRUE(p->parseDeclare());
    EXPECT_TRUE(p->parseDefine()) << "an existing node is kept unchanged";
    EXPECT_EQ(p->definedNodes[2]->type(), "t");
}

TEST(NodeStatements, withFindsNodesThenTheLastDefinitionOfTheType) {
    ParserOn p("define m; t x; with x: with m: with nothing:");
    EXPECT_TRUE(p->parseDefine());
    EXPECT_TRUE(p->parseDeclare());
    EXPECT_TRUE(p->parseWith());
    EXPECT_EQ(p->withNode->name(), "x");
    EXPECT_TRUE(p->parseWith());
    EXPECT_EQ(p->withNode->name(), "m");
    EXPECT_TRUE(p->parseWith());
    EXPECT_EQ(p->withNode, nullptr);
    // Defined nodes with other names are found by their type; the last definition wins.
    Node* first = p.scene.createNode("kind", "k1");
    Node* last = p.scene.createNode("kind", "k2");
    p->definedNodes.add(first);
    p->definedNodes.add(nullptr);
    p->definedNodes.add(last);
    EXPECT_EQ(p->definedNodes.lastOfType("kind"), last);
    p->definedNodes.forget(last);
    EXPECT_EQ(p->definedNodes.lastOfType("kind"), first);
    EXPECT_EQ(p->definedNodes.lastOfType("other"), nullptr);
}

TEST(NodeStatements, removeMakesTheParserForget) {
    ParserOn p("define m; with m: remove m; remove nobody; with m:");
    EXPECT_TRUE(p->parseDefine());
    EXPECT_TRUE(p->parseWith());
    EXPECT_NE(p->withNode, nullptr);
    EXPECT_TRUE(p->parseRemove());
    EXPECT_EQ(p->withNode, nullptr);
    EXPECT_EQ(p->definedNodes[0], nullptr);
    EXPECT_TRUE(p->parseRemove()) << "a missing node is not reported";
    EXPECT_TRUE(p->parseWith());
    EXPECT_EQ(p->withNode, nullptr);
    const Reading r = readText("t a: remove a; .x = 1;");
    EXPECT_EQ(r.log, (Log{error(1, 22, "PARSE ERROR (1,22): 'with' node not set (input: .x).")}));
}

TEST(Path, readsNamesMembersAndIndices) {
    const struct {
        const char* text;
        const char* collapsed; // null: not a path
        std::size_t tokens;
    } cases[] = {
        {"light1.color =", "light1.color", 3},
        {".color =", ".color", 2},
        {"mesh1.steps[0].time =", "mesh1.steps[0].time", 6},
        {"mesh1.points[] =", "mesh1.points[]", 4},
        {"a.b[1][2] =", "a.b[1][2]", 5},
        {"a.b.c.d =", "a.b.c.d", 7},
        {"a . b [1]", "a.b[1]", 4},
        {"a.b[ 1 ].c[2]", "a.b[ 1 ].c[2]", 7},
        {"a.b.", "a.b", 3},
        {"node =", nullptr, 0},
        {"node.5", nullptr, 0},
        {"node.", nullptr, 0},
        {".", nullptr, 0},
        {".[0]", nullptr, 0},
        {"a[0].b", nullptr, 0},
        {"null.x", nullptr, 0},
        {"5", nullptr, 0},
    };
    for (const auto& c : cases) {
        ParserOn p(c.text);
        ds::Vector<Token> tokens;
        EXPECT_EQ(p->path(tokens), c.collapsed != nullptr) << c.text;
        EXPECT_EQ(tokens.size(), c.tokens) << c.text;
        EXPECT_EQ(VrnParser::collapse(tokens), c.collapsed ? c.collapsed : "") << c.text;
        EXPECT_EQ(p->position() == (TextPosition{0, 0}), c.collapsed == nullptr) << c.text << ": nothing consumed";
    }
}

TEST(Path, consumesItsPartsOneByOne) {
    ParserOn p("[0] .x .5");
    ds::Vector<Token> tokens;
    EXPECT_FALSE(p->scalarattr(tokens));
    EXPECT_TRUE(p->arrayattr(tokens));
    EXPECT_FALSE(p->arrayattr(tokens));
    EXPECT_TRUE(p->scalarattr(tokens));
    EXPECT_FALSE(p->scalarattr(tokens));
    EXPECT_EQ(VrnParser::collapse(tokens), "[0].x");
}

} // namespace vrn::test

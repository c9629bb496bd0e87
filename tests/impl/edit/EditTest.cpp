#include "impl/Edit.h"

#include "tests/support/Reading.h"

#include <gtest/gtest.h>
#include <sstream>

namespace vrn::test {

namespace {

// An edit in the form `set PATH VALUE`, `add TYPE NAME` and so on. The second part ends at the first blank.
Edit editOf(const std::string& text) {
    const std::size_t first = text.find(' ');
    const std::size_t second = std::min(text.find(' ', first + 1), text.size());
    const String target = std::string_view(text).substr(first + 1, second - first - 1);
    const String value = std::string_view(text).substr(std::min(second + 1, text.size()));
    const std::string verb = text.substr(0, first);
    return verb == "set"      ? Edit::set(target, value)
           : verb == "link"   ? Edit::link(target, value)
           : verb == "add"    ? Edit::add(target, value)
           : verb == "rename" ? Edit::rename(target, value)
                              : Edit::remove(target);
}

// The text after some edits, one a line; or `REASON (LINE,COLUMN)...`.
std::string edited(const std::string& text, const std::string& edits, const EditOptions& options = {}) {
    std::vector<Edit> all;
    std::istringstream rest(edits);
    for (std::string line; std::getline(rest, line);)
        all.push_back(editOf(line));
    const EditResult result = editVrn(std::string_view(text), all, options);
    if (!result.refusal)
        return changedText(text, result.changes);
    EXPECT_TRUE(result.changes.empty());
    std::string refusal = result.refusal->reason.buf();
    for (const TextPosition& place : result.refusal->places)
        refusal += " (" + std::to_string(place.line) + "," + std::to_string(place.column) + ")";
    return refusal;
}

struct EditCase {
    const char* text;
    const char* edits;
    const char* expected;
};

void expectEdits(std::initializer_list<EditCase> cases) {
    for (const EditCase& each : cases)
        EXPECT_EQ(edited(each.text, each.edits), each.expected) << each.text << "\n" << each.edits;
}

} // namespace

TEST(Edit, changesTheLastAssignment) {
    expectEdits({
        {"t a; a.x = 1;", "set a.x 2", "t a; a.x = 2;"},
        {"t a;\na.x = 1; # one\na.x  =  3 ; # last\n", "set a.x 2", "t a;\na.x = 1; # one\na.x  =  2 ; # last\n"},
        {"t a:\n  .x = 1;\nt b:\n  .x = 1;\n", "set a.x 2", "t a:\n  .x = 2;\nt b:\n  .x = 1;\n"},
        {"t a; a.x = 1; remove a; t a; a.x = 2;", "set a.x 3", "t a; a.x = 1; remove a; t a; a.x = 3;"},
        {"t a; a.x = 1; a.x = \"no\";", "set a.x 3", "t a; a.x = 3; a.x = \"no\";"},
        {"t a; a.o.p.q = 1;", "set a.o.p.q 2", "t a; a.o.p.q = 2;"},
        {"t a; a.l[*] = 1; a.l[*] = 2;", "set a.l[1] 3", "t a; a.l[*] = 1; a.l[*] = 3;"},
        {"t a; a.l[*] = 1; a.l[ 0 ] = 2;", "set a.l[0] 3", "t a; a.l[*] = 1; a.l[ 0 ] = 3;"},
        {"t a; a.p = float[2] {1,\n  2};", "set a.p float[1] {3}", "t a; a.p = float[1] {3};"},
        {"t a; a.s = \"x\";", "set a.s \"= ; # {\"", "t a; a.s = \"= ; # {\";"},
        {"t a; t b; a.n = a;", "set a.n b", "t a; t b; a.n = b;"},
        {"t a; a.n = a;", "set a.n null", "t a; a.n = null;"},
        {"t a; t b; a.in |= a.out;", "link a.in b.out", "t a; t b; a.in |= b.out;"},
        {"t a; a.in |= a.out;", "link a.in null", "t a; a.in |= null;"},
        {"t a; a.in = 1; a.in |= a.out; a.in = 2;", "link a.in a.other", "t a; a.in = 1; a.in |= a.other; a.in = 2;"},
        {"t a; a.in = 1; a.in |= a.out;", "set a.in 2", "t a; a.in = 2; a.in |= a.out;"},
        {"byte b; b.p = byte[4] {.789c6364 6266010000 18000B};", "set b.p byte[1] {7}", "byte b; b.p = byte[1] {7};"},
    });
}

TEST(Edit, spellsConvertedValuesInTheTypeOfTheInput) {
    expectEdits({
        {"t a; a.x = 1.5;", "set a.x 2", "t a; a.x = 2.0;"},
        {"t a; a.x = true;", "set a.x false", "t a; a.x = false;"},
        {"t a; a.c = rgba(0 0 0);", "set a.c vec3(1 0 0.5)", "t a; a.c = rgba(1 0 0.5 1);"},
        {"t a; a.x = 1;", "set a.x true", "t a; a.x = 1;"},
        {"t a; a.x = 1.50;", "set a.x 1.500", "t a; a.x = 1.500;"},
    });
}

TEST(Edit, addsAnAssignmentInTheLayoutOfItsNeighbours) {
    expectEdits({
        {"t a;", "set a.x 2", "t a;\na.x = 2;"},
        {"t a;\n", "set a.x 2", "t a;\na.x = 2;\n"},
        {"t a; a.x=1;", "set a.y 2", "t a; a.x=1; a.y=2;"},
        {"t a;\na.x=1;\nt b;\n", "set a.y 2", "t a;\na.x=1;\na.y=2;\nt b;\n"},
        {"t a:\r\n\t.x = 1; # one\r\n\r\nt b;\r\n", "set a.y 2",
         "t a:\r\n\t.x = 1; # one\r\n\t.y = 2;\r\n\r\nt b;\r\n"},
        {"t a:\rt b:\r", "set a.y 2", "t a:\r    .y = 2;\rt b:\r"},
        {"t a:\n  .x = 1;\nt b:\nt c;", "set b.y 2", "t a:\n  .x = 1;\nt b:\n  .y = 2;\nt c;"},
        {"t a:\n  .x    = 1;\n  .long = 2;\n", "set a.y 2", "t a:\n  .x    = 1;\n  .long = 2;\n  .y = 2;\n"},
        {"t a:\n  .long = 2;\n  .x    = 1;\n", "set a.zz 2", "t a:\n  .long = 2;\n  .x    = 1;\n  .zz   = 2;\n"},
        {"t a:\n  .x    = 1;\n", "set a.longer 2", "t a:\n  .x    = 1;\n  .longer = 2;\n"},
        {"t a:\n.x = 1; t b; b.x = 1;\n", "set a.y 2", "t a:\n.x = 1; .y = 2; t b; b.x = 1;\n"},
        {"t a;\nt b:\na.x = 1;\n", "set a.y 2", "t a;\nt b:\na.x = 1;\na.y = 2;\n"},
        {"t a; a.s = \"\n\";\n", "set a.y 2", "t a; a.s = \"\n\"; a.y = 2;\n"},
        {"t a;\na.s = \"\n\";\n", "set a.y 2", "t a;\na.s = \"\n\";\na.y = 2;\n"},
        {"t a;\n# at the end", "set a.y 2", "t a;\na.y = 2;\n# at the end"},
        {"t a; # at the end", "set a.y 2", "t a; # at the end\na.y = 2;"},
        {"t a;\n\xFF rest", "set a.y 2", "t a;\na.y = 2;\n\xFF rest"},
        {"\xEF\xBB\xBFt a;", "set a.y 2", "\xEF\xBB\xBFt a;\na.y = 2;"},
        {"t a; a.l[0] = 1;", "set a.l[*] 2", "t a; a.l[0] = 1; a.l[*] = 2;"},
        {"t a; a.l[0] = 1;", "set a.l[2] 2", "t a; a.l[0] = 1; a.l[2] = 2;"},
        {"t a; a.l[2] = 1;", "set a.l[0] 2", "t a; a.l[2] = 1; a.l[0] = 2;"},
        {"t a; a.o = {}; a.o.x = 1;", "set a.o {}", "t a; a.o = {}; a.o.x = 1; a.o = {};"},
        {"t a; a.o.x = 1; a.o = {};", "set a.o.x 2", "t a; a.o.x = 1; a.o = {}; a.o.x = 2;"},
        {"define d; d.x = 1; d a;", "set a.x 2", "define d; d.x = 1; d a; a.x = 2;"},
        {"t a; t b;", "link b.in a.out", "t a; t b; b.in |= a.out;"},
        {"t a; t b; b.i  |=  a.p;", "link b.in a.out", "t a; t b; b.i  |=  a.p; b.in |=  a.out;"},
        {"t a;\nt b;\n", "set a.n b", "t a;\na.n = b;\nt b;\n"},
    });
}

TEST(Edit, addsNodesAtTheEnd) {
    expectEdits({
        {"", "add t a", "t a;\n"},
        {"\n\n", "add t a", "\n\nt a;\n"},
        {"t a;", "add t b", "t a;\nt b;"},
        {"t a;\n", "add t b", "t a;\nt b;\n"},
        {"t a;\r\n\r\nt b;\r\n", "add t c", "t a;\r\n\r\nt b;\r\n\r\nt c;\r\n"},
        {"t a:\n    .x = 1;\n", "add t b\nset b.y 2", "t a:\n    .x = 1;\n\nt b:\n    .y = 2;\n"},
        {"t a:\n.x = 1;\n# of b\nt b:\n", "add t c", "t a:\n.x = 1;\n# of b\nt b:\nt c:\n"},
        {"t a:\n.x = 1;\n\n# of b\nt b:\n", "add t c", "t a:\n.x = 1;\n\n# of b\nt b:\n\nt c:\n"},
        {"t a; # end", "add t b", "t a; # end\nt b;"},
        {"t a;\n\"not closed", "add t b", "t a;\nt b;\n\"not closed"},
        {"t a;\n", "add define d", "t a;\ndefine d;\n"},
        {"define d; d.x = 1;", "add d a", "define d; d.x = 1;\nd a;"},
    });
}

TEST(Edit, renamesAllThatNamesANode) {
    expectEdits({
        {"t a; a.x = 1;\na . y = 2;", "rename a b", "t b; b.x = 1;\nb . y = 2;"},
        {"t a: .x = 1; with a: .y = 2; t a;", "rename a b", "t b: .x = 1; with b: .y = 2; t b;"},
        {"t q; q.n = a; q.in |= a.out; q.l[*] |= .a.out; t a;", "rename a bb",
         "t q; q.n = bb; q.in |= bb.out; q.l[*] |= .bb.out; t bb;"},
        {"t a; a.a.a = 1; a.s = \"a\"; # a\na z; z.a = 1;", "rename a b",
         "t b; b.a.a = 1; b.s = \"a\"; # a\na z; z.a = 1;"},
        {"define d; d.x = 1; d a; t b; b.d = d;", "rename d e", "define e; e.x = 1; e a; t b; b.d = e;"},
        {"t a; remove a; t a; t q; q.n = a;", "rename a b", "t a; remove a; t b; t q; q.n = b;"},
        {"t a; a.n = a;", "rename a b\nrename b c", "t c; c.n = c;"},
        {"t a; t b;", "rename a c\nrename b a\nrename c b", "t b; t a;"},
        {"t a;", "rename a a", "t a;"},
    });
}

TEST(Edit, removesStatementsAndTheirLines) {
    expectEdits({
        {"t a;\na.x = 1;\na.y = 2;\n", "remove a.x", "t a;\na.y = 2;\n"},
        {"t a;\na.x = 1;\na.y = 2;", "remove a.y", "t a;\na.x = 1;"},
        {"t a;\n  a.x = 1; # one\na.y = 2;\n", "remove a.x", "t a;\n  # one\na.y = 2;\n"},
        {"t a; a.x = 1; a.y = 2;\n", "remove a.x", "t a; a.y = 2;\n"},
        {"t a; a.x = 1; a.y = 2;\n", "remove a.y", "t a; a.x = 1;\n"},
        {"t a;\na.x = 1; a.y = 2;\n", "remove a.x", "t a;\na.y = 2;\n"},
        {"t a;\r\na.x = 1;\r\na.x = 2;\r\n", "remove a.x", "t a;\r\n"},
        {"t a;\na.o.x = 1; a.o.y = 2;\n", "remove a.o", "t a;\n"},
        {"t a;\na.o.x = 1; a.o.y = 2;\n", "remove a.o.x", "t a;\na.o.y = 2;\n"},
        {"t a;\na.o.x = 1;\n", "remove a.o.x", "t a;\n"},
        {"t a;\na.o = {};\na.o.x = 1;\n", "remove a.o.x", "t a;\na.o = {};\n"},
        {"t a;\na.o[*].p.x = 1;\na.y = 1;\n", "remove a.o[0].p.x", "t a;\na.y = 1;\n"},
        {"t a; a.l[0] = 1; a.l[*] = 2;", "remove a.l[1]", "t a; a.l[0] = 1;"},
        {"t a; t b; b.x = 1; b.in |= a.out;", "remove b.in", "t a; t b; b.x = 1;"},
        {"# head\nt a;\na.s = \"\n\";\nt b;\n", "remove a", "# head\nt b;\n"},
        {"t a:\n.x = 1;\n\nt b:\n.x = 1;\n\nt c;\n", "remove b", "t a:\n.x = 1;\n\nt c;\n"},
        {"t a:\n.x = 1;\n\nt b:\n.x = 1;\n", "remove b", "t a:\n.x = 1;\n"},
        {"t a:\n.x = 1;\n\nt b;\n", "remove a", "t b;\n"},
        {"t a; a.n = a; a.in |= a.out; t b;", "remove a", "t b;"},
        {"t a; remove a; t a; t b;", "remove a", "t a; remove a; t b;"},
        {"t a;", "remove a", ""},
        {"\xEF\xBB\xBFt a;\nt b;\n", "remove a", "\xEF\xBB\xBFt b;\n"},
        {"t a;\n\nt b;\n\nt a;\na.x = 1;\n\nt c;", "remove a", "t b;\n\nt c;"},
        {"t a;\n\nt b;", "remove b", "t a;"},
        {"define d; d.x = 1; d a; a.x = 2;", "remove d.x", "define d; d a; a.x = 2;"},
    });
}

TEST(Edit, makesAllEditsInOrderOrNone) {
    expectEdits({
        {"t a; a.x = 1;", "remove a.x\nset a.x 2.5", "t a;\na.x = 2.5;"},
        {"t a;", "add t b\nset b.x 1\nset b.x 2\nrename b c\nlink a.in c.out", "t a;\na.in |= c.out;\nt c;\nc.x = 2;"},
        {"t a;", "set a.x 1\nremove none", "there is no node 'none'"},
    });
    const EditResult result = editVrn("t a; a.x = 1;", std::vector{Edit::rename("a", "b"), Edit::remove("c")});
    ASSERT_TRUE(result.refusal);
    EXPECT_EQ(result.refusal->edit, 1U);
}

TEST(Edit, yieldsChangesOfTheOldText) {
    const String text = "t a; a.x = 1; t b;";
    const EditResult result =
        editVrn(text, std::vector{Edit::rename("a", "ab"), Edit::set("ab.x", "22"), Edit::remove("b")});
    ASSERT_FALSE(result.refusal);
    const std::vector<TextChange> expected = {{2, 1, "ab"}, {5, 1, "ab"}, {11, 1, "22"}, {13, 5, ""}};
    EXPECT_EQ(result.changes, expected);
    EXPECT_TRUE(editVrn(text, {}).changes.empty());
}

TEST(Edit, refusesWhatTheReaderDoesNotAccept) {
    expectEdits({
        {"t a; a.x = 1;", "set a.x \"s\"",
         "the reader does not accept 'a.x = \"s\";': TYPE ERROR (1,10): expected Int @ a.x but found String."},
        {"t a; a.x = 1;", "set a.x 2.5",
         "the reader does not accept 'a.x = 2.5;': TYPE WARNING (1,10): narrowing Real to Int @ a.x."},
        {"t a;", "set b.x 1", "the reader does not accept 'b.x = 1;': PARSE ERROR (1,8): node 'b.x' not found ."},
        {"t a;", "set .x 1",
         "the reader does not accept '.x = 1;': PARSE ERROR (1,7): 'with' node not set (input: .x)."},
        {"t a;", "set a.x b", "the reader does not accept 'a.x = b;': Cannot assign nonexistent node b to a.x."},
        {"t a;", "link a.x b.out",
         "the reader does not accept 'a.x |= b.out;': Cannot connect nonexistent node b to a.x."},
        {"t a;", "link a.x a",
         "the reader does not accept 'a.x |= a;': BAD TOKEN (1,8): expected '(null|path)', found 'a'."},
        {"t a;", "set a.x 1; t b", "'a.x = 1; t b;' is not one statement that sets an input of a named node"},
        {"t a;", "set a.x 1;", "the reader does not accept 'a.x = 1;;': PARSE ERROR (1,8): unrecognized token ';'.."},
        {"t a; a.p = float[1] {1};", "set a.p float[1] {2} #",
         "the reader does not accept 'a.p = float[1] {2} #;': BAD TOKEN (1,21): expected ';', found '#;'."},
        {"t a; a.p = float[1] {1};", "set a.p float[2] {2}",
         "the reader does not accept 'a.p = float[2] {2};': Too few elements (1) for float[2] buffer, remainder set to "
         "zero."},
        {"t a; a.x = ;", "set a.y 1",
         "the text cannot be edited before this error is corrected: BAD TOKEN (1,12): expected "
         "'(scalar|buffer|reference)', found ';'. (1,12)"},
        {"?", "add t a", "the text cannot be edited before this error is corrected: INVALID TOKEN (1,0): '?'"},
    });
}

TEST(Edit, refusesNamesThatAreNone) {
    expectEdits({
        {"t a;", "rename a 1b", "'1b' is not a name: use letters, digits and _, and do not begin with a digit"},
        {"t a;", "rename a null", "'null' is not a name: use letters, digits and _, and do not begin with a digit"},
        {"t a;", "add t ", "'' is not a name: use letters, digits and _, and do not begin with a digit"},
        {"t a;", "add t x;", "'x;' is not a name: use letters, digits and _, and do not begin with a digit"},
        {"t a;", "add remove b", "'remove' begins another statement and cannot be a type"},
        {"t a;", "add With b", "'With' begins another statement and cannot be a type"},
        {"t a;", "rename b c", "there is no node 'b'"},
        {"t a; remove a;", "rename a c", "there is no node 'a'"},
        {"t a;", "remove b.x", "there is no input 'b.x'"},
        {"t a; a.l[0] = 1;", "remove a.l[*]", "there is no input 'a.l[*]'"},
        {"t a; a.l[0] = 1;", "remove a.l[1]", "there is no input 'a.l[1]'"},
        {"t a; a.l[0] = 1;", "remove a.l.x", "there is no input 'a.l.x'"},
    });
}

TEST(Edit, refusesToChangeTheMeaningOfOtherStatements) {
    expectEdits({
        {"t a;\nt b;\n", "rename a b", "the name 'b' is in use (2,3)"},
        {"t a; t b;\nb.x = 1; remove b;", "rename a b", "the name 'b' is in use (1,8) (2,1) (2,17)"},
        {"t a; a.n = b;", "rename a b", "the name 'b' is in use (1,12)"},
        {"define d; e a;", "rename d e", "the name 'e' is in use (1,11)"},
        {"t a; t b;", "add t b", "the name 'b' is in use (1,8)"},
        {"t a; a.n = b;", "add t b", "the name 'b' is in use (1,12)"},
        {"t a;\nt b; b.n = a;\nb.in |= a.out;\n", "remove a", "'a' is in use (2,12) (3,9)"},
        {"define d; d a;", "remove d", "'d' is in use (1,11)"},
        {"define d; d.x = 1;\nd a;", "set d.x 2", "the edit would also change 'a.x' (2,1)"},
        {"define d; d.x = 1;\nd a;", "set d.y 2", "the edit would also change 'a.y' (2,1)"},
        {"define d; d.x = 1;\nd a;\n", "remove d.x", "the edit would also change 'a.x' (2,1)"},
        {"define d; d.x = 1;\nd a;", "remove a.x",
         "no statement creates 'a.x'; it comes from a definition, the catalogue or a later index (2,1)"},
        {"define d; d.x = 1;\nd a; a.x = 2;", "remove a.x",
         "'a.x' would not become what is asked for, because of other statements (2,6)"},
        {"t a; a.l[0] = 1; a.l[1] = 1;", "remove a.l[0]",
         "'a.l[0]' is not the last element of its array: others would get its index (1,6)"},
        {"define d; d a;", "rename d with",
         "the edit would lead to a new diagnostic: there is no node a to go on with; a new one of type with is made"},
        {"t a; a.l[2] = 1;", "remove a.l[2]", "the edit would also change 'a.l' (1,1)"},
    });
}

TEST(Edit, placesAreThoseOfTheOldText) {
    expectEdits(
        {{"t first;\nt b;\nt c; c.n = b;", "rename first a_longer_name\nadd t d\nremove b", "'b' is in use (3,12)"},
         {"t a;\nt b;", "add t c\nset b.n c\nremove c", "'c' is in use (2,5)"}});
}

// What the catalogue creates is in no statement, and former names lead to inputs.
TEST(Edit, readsWithACatalogue) {
    EditOptions options;
    options.catalogue = std::make_shared<const Catalogue>(readCatalogue(
        R"({"types": {"t": {"inputs": {"x": {"type": "Real", "default": 2}, "mode": {"type": "String", "enum": ["one"]},
            "locked": {"type": "Int", "locked": true}}, "renamedInputs": {"old": "x"}}}})"));
    const auto expect = [&](const char* text, const char* edits, const char* expected) {
        EXPECT_EQ(edited(text, edits, options), expected);
    };
    expect("t a;", "set a.x 3", "t a;\na.x = 3.0;");
    expect("t a; a.old = 1.0;", "set a.x 3", "t a; a.old = 3.0;");
    expect("t a; a.x = 1.0;", "set a.old 3", "t a; a.x = 3.0;");
    expect("t a;", "set a.locked 3",
           "the reader does not accept 'a.locked = 3;': TYPE ERROR (1,13): expected Int @ a.locked but found 3.");
    expect(
        "t a;", "set a.mode \"two\"",
        "the reader does not accept 'a.mode = \"two\";': ENUM WARNING (1,15): setting non-existent enum value 'two' @ "
        "a.mode.");
    expect("t a;", "remove a.x",
           "no statement creates 'a.x'; it comes from a definition, the catalogue or a later index (1,1)");
}

// An input may have a name that was the former name of another one.
TEST(Edit, findsInputsWhoseNameLeadsToAnother) {
    EditOptions options;
    options.catalogue = std::make_shared<const Catalogue>(readCatalogue(
        R"({"types": {"t": {"inputs": {"x": {"type": "Real", "default": 2}, "y": {"type": "Int", "optional": true}},
            "renamedInputs": {"old": "x", "x": "y"}}}})"));
    EXPECT_EQ(edited("t a;", "set a.old 3", options), "t a;\na.old = 3.0;");
    EXPECT_EQ(edited("t a; a.old = 1.0; a.x = 1;", "set a.old 3", options), "t a; a.old = 3.0; a.x = 1;");
    EXPECT_EQ(edited("t a; a.o.old = 1;", "remove a.o.old", options), "t a;");
}

// Several edits are read with their statements, the last one only for its scene.
TEST(Edit, checksEachOfSeveralEdits) {
    expectEdits({
        {"t a; a.x = 1;", "set a.x 2\nset a.x 3\nset a.x 4", "t a; a.x = 4;"},
        {"t a;", "add t b\nset a.n b\nrename b c\nset c.x 1", "t a;\na.n = c;\nt c;\nc.x = 1;"},
        {"define d; d.x = 1;\nd a;", "set a.y 1\nset d.x 2\nset a.z 1", "the edit would also change 'a.x' (2,1)"},
        {"define d; d a;", "set a.x 1\nrename d with\nset a.x 2",
         "the edit would lead to a new diagnostic: there is no node a to go on with; a new one of type with is made"},
        {"t a; a.x = \"no\"; a.x = 1;", "set a.y 1\nset a.y 2", "t a; a.x = \"no\"; a.x = 1; a.y = 2;"},
    });
}

// A carriage return ends a line like a line feed, but only line feeds count for positions.
TEST(Edit, takesEachKindOfLineEnd) {
    expectEdits({
        {"t a;\r\n\r\nt b;\r\rt c;\r", "add t d", "t a;\r\n\r\nt b;\r\rt c;\r\n\r\nt d;\r"},
        {"t a;\r\n\r\nt b;\rt c;\r", "add t d", "t a;\r\n\r\nt b;\rt c;\r\nt d;\r"},
        {"t a;\rt b; b.n = a;\r", "remove a", "'a' is in use (1,17)"},
        {"t a;\rt b;\nb.n = a;\r", "remove a", "'a' is in use (2,7)"},
        {"t a;\ra.x = 1; a.y = 2;\rt b;\r", "remove a.x", "t a;\ra.y = 2;\rt b;\r"},
    });
}

TEST(Edit, keepsToTheLimits) {
    EditOptions options;
    options.limits.maxArrayElements = 3;
    EXPECT_EQ(edited("t a;", "set a.l[2] 1", options), "t a;\na.l[2] = 1;");
    EXPECT_EQ(edited("t a;", "set a.l[3] 1", options),
              "the reader does not accept 'a.l[3] = 1;': PARSE ERROR (1,11): invalid input array index: 3.");
}

} // namespace vrn::test

// The reader compiled against another scene model: which calls it makes, and in which order.
#include "impl/Reader.h"
#include "scene/Scene.h"
#include "tests/host/Queries.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

using Calls = std::vector<std::string>;

// The calls for a text, read into a scene that contains a node `a` of type `t`.
static Calls callsFor(const char* text) {
    Scene scene;
    scene.createNode("t", "a", "");
    calls.clear();
    const ScopedLogSink sink(
        [](const LogRecord& record) { calls.push_back("log: " + std::string(record.text.view())); });
    EXPECT_TRUE(parseString(&scene, text)) << text;
    EXPECT_EQ(calls.front(), "begin name maps");
    EXPECT_EQ(calls.back(), "end name maps");
    calls.erase(calls.begin());
    calls.erase(std::ranges::find(calls, "end name maps"));
    return calls;
}

TEST(Host, headerIsResetBeforeTheTextIsRead) {
    Scene scene;
    calls.clear();
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("# version: 2"), false));
    EXPECT_EQ(calls, (Calls{"clearComments()", "setFileVersion(1)", "setFileTime()", "begin name maps",
                            "setFileVersion(2)", "pushFileComment(# version: 2)", "end name maps"}));
    calls.clear();
    EXPECT_TRUE(parseVrn(&scene, File::fromMemory("# time: x"), true));
    EXPECT_EQ(calls, (Calls{"begin name maps", "setFileTime(x)", "pushFileComment(# time: x)", "end name maps"}));
}

TEST(Host, statementsCallTheScene) {
    const struct {
        const char* text;
        Calls calls;
    } cases[] = {
        {"# version: 7", {"setFileVersion(7)", "pushFileComment(# version: 7)"}},
        {"# version: x", {"log: Failed to parse VRN version comment: # version: x", "pushFileComment(# version: x)"}},
        {"# time: noon", {"setFileTime(noon)", "pushFileComment(# time: noon)"}},
        {"# time:", {"pushFileComment(# time:)"}},
        {"remove a;", {"findNode(a)", "removeNode(a)"}},
        {"remove b;", {"findNode(b)", "removeNode(b)"}},
        {"define d;", {"findNode(d)", "defineNode(d)"}},
        {"define a;", {"findNode(a)"}},
        {"camera c;", {"findNode(c)", "createNode(camera, c, )"}},
        {"camera a:", {"findNode(a)"}},
        {"with a: .x = 1;",
         {"findNode(a)", "updateInputName(t, x)", "a.hasInput(x, Null)", "a.createInput(x, Int)", "a.x.assign(Int 1)"}},
        {"a.x = 1.5;",
         {"findNode(a)", "updateInputName(t, x)", "a.hasInput(x, Null)", "a.createInput(x, Real)",
          "a.x.assign(Real 1.50)"}},
        {"a.old = 1;",
         {"findNode(a)", "updateInputName(t, old)", "a.hasInput(current, Null)", "a.createInput(current, Int)",
          "a.current.assign(Int 1)"}},
        {"a.x = []; a.x = [];",
         {"findNode(a)", "updateInputName(t, x)", "a.hasInput(x, Null)", "a.createArray(x, Null)",
          "a.x.assign(Array of Null)", "findNode(a)", "updateInputName(t, x)", "a.hasInput(x, Null)", "a.input(x)",
          "a.x.assign(Array of Null)"}},
        {"a.o.m = {};",
         {"findNode(a)", "updateInputName(t, o)", "a.hasInput(o, Null)", "a.createInput(o, Object)",
          "updateInputName(t, m)", "a.o.createInput(m, Object)", "a.o.m.assign(Object)"}},
        {"a.l[1] = \"s\"; a.l[*] = \"t\";",
         {"findNode(a)", "updateInputName(t, l)", "a.hasInput(l, Null)", "a.createArray(l, String)",
          "a.l.appendElement()", "a.l.appendElement()", "a.l[1].assign(String s)", "findNode(a)",
          "updateInputName(t, l)", "a.hasInput(l, Null)", "a.input(l)", "a.l.appendElement()",
          "a.l[2].assign(String t)"}},
        {"a.l[0][0] = 1;",
         {"findNode(a)", "updateInputName(t, l)", "a.hasInput(l, Null)", "a.createArray(l, Array)",
          "a.l.appendElement()", "a.l[0].set(Array of Int)", "a.l[0].appendElement()", "a.l[0][0].assign(Int 1)"}},
        {"a.l[0].m = true;",
         {"findNode(a)", "updateInputName(t, l)", "a.hasInput(l, Null)", "a.createArray(l, Object)",
          "a.l.appendElement()", "updateInputName(t, m)", "a.l[0].createInput(m, Bool)", "a.l[0].m.assign(Bool)"}},
        {"a.b[1] = byte[2] {1 2};",
         {"findNode(a)", "updateInputName(t, b)", "a.hasInput(b, Null)", "a.createArray(b, Buffer)",
          "a.b.appendElement()", "a.b.appendElement()", "a.b[0].set(Buffer of 0 Byte)", "a.b[1].set(Buffer of 0 Byte)",
          "a.b[1].assign(Buffer of 2 Byte)"}},
        {"a.v = vec2(1 2); a.v = vec3(3 4 5);",
         {"findNode(a)", "updateInputName(t, v)", "a.hasInput(v, Null)", "a.createInput(v, Vec2)",
          "a.v.assign(Vec2 1.00 2.00)", "findNode(a)", "updateInputName(t, v)", "a.hasInput(v, Null)", "a.input(v)",
          "log: TYPE WARNING (1,35): narrowing Vec3 to Vec2 @ a.v.", "a.v.assign(Vec2 3.00 4.00)"}},
        {"a.x = true; a.x = 1.5;",
         {"findNode(a)", "updateInputName(t, x)", "a.hasInput(x, Null)", "a.createInput(x, Bool)", "a.x.assign(Bool)",
          "findNode(a)", "updateInputName(t, x)", "a.hasInput(x, Null)", "a.input(x)",
          "log: TYPE ERROR (1,22): expected Bool @ a.x but found Real.", "a.x.assign(Real 1.50)"}},
        {"a.locked = 1;",
         {"findNode(a)", "updateInputName(t, locked)", "a.hasInput(locked, Null)", "a.createInput(locked, Int)",
          "log: TYPE ERROR (1,13): expected Int @ a.locked but found 1."}},
        {"a.linkOnly = int32[1] {1};",
         {"findNode(a)", "updateInputName(t, linkOnly)", "a.hasInput(linkOnly, Null)",
          "a.createInput(linkOnly, Buffer)",
          "log: TYPE ERROR (1,26): expected Buffer @ a.linkOnly but found int32[]."}},
        {"a.mode = \"c\";",
         {"findNode(a)", "updateInputName(t, mode)", "a.hasInput(mode, Null)", "a.createInput(mode, String)",
          "a.mode.assign(String c)", "log: ENUM WARNING (1,13): setting non-existent enum value 'c' @ a.mode."}},
        {"a.in |= b.out; t b;",
         {"findNode(a)", "updateInputName(t, in)", "a.hasInput(in, Null)", "a.createInput(in, Null)", "a.in.retain()",
          "findNode(b)", "createNode(t, b, )", "findNode(b)", "updateOutputName(t, out)", "b.findOutput(out)",
          "a.in.connect(out)", "a.in.release()"}},
        {"a.in |= a.nope;",
         {"findNode(a)", "updateInputName(t, in)", "a.hasInput(in, Null)", "a.createInput(in, Null)", "a.in.retain()",
          "findNode(a)", "updateOutputName(t, nope)", "a.findOutput(nope)",
          "log: Cannot connect nonexistent output a.nope to a.in.", "a.in.release()"}},
        {"a.in |= null; a.r = a; a.r = null;",
         {"findNode(a)", "updateInputName(t, in)", "a.hasInput(in, Null)", "a.createInput(in, Null)", "a.in.retain()",
          "findNode(a)", "updateInputName(t, r)", "a.hasInput(r, Null)", "a.createInput(r, Null)", "a.r.retain()",
          "findNode(a)", "updateInputName(t, r)", "a.hasInput(r, Null)", "a.input(r)", "a.in.disconnect()",
          "a.in.release()", "a.r.setNode(null)", "a.r.release()"}},
        {"a.r = a;",
         {"findNode(a)", "updateInputName(t, r)", "a.hasInput(r, Null)", "a.createInput(r, Null)", "a.r.retain()",
          "findNode(a)", "a.r.setNode(a)", "a.r.release()"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(callsFor(c.text), c.calls) << c.text;
        // By the fast path, which needs some characters after the statement, the same changes are made.
        Calls changes = callsFor((c.text + ("\n" + std::string(100, ' '))).c_str());
        Calls expected = c.calls;
        std::erase_if(changes, isQuery);
        std::erase_if(expected, isQuery);
        EXPECT_EQ(changes, expected) << c.text;
    }
}

} // namespace vrn::test

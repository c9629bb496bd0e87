// Paths, what they match in a scene, and how the matches are written.
#include "inspect/path/ScenePath.h"

#include "inspect/path/Answer.h"
#include "inspect/path/NotFound.h"
#include "tests/support/Reading.h"

namespace vrn::test {

using namespace vrn::inspect;

namespace {

class Paths : public testing::Test {
protected:
    Reading reading = readText("t cam1: .fov = 45.5; .s = \"two\\nlines\\t\";\n"
                               "t cam2: .fov = 30; .type = \"mine\"; .ref = cam1;\n"
                               "mesh m: .p = vec3f[4] {0 1 2 3 4 5 6 7 8 9 10 11}; .w[0] = 1.5; .w[1] = 2.5;\n"
                               ".w[2] = 3.5; .uv[0].name = \"u\"; .uv[1].name = \"v\"; .o.p.q = 7; .o.name = 1;\n");
    const Scene& scene = *reading.scene;

    // The paths of all matches, separated by spaces.
    [[nodiscard]] std::string matchesOf(const char* path) const {
        std::string found;
        const PathMatches matches = forEachMatch(scene, parsePath(path), [&](const PathMatch& match) {
            found += (found.empty() ? "" : " ") + pathText(match);
            EXPECT_EQ(match.input != nullptr, match.kind >= PathMatch::Kind::Input) << path;
            EXPECT_NE(match.node, nullptr);
        });
        EXPECT_EQ(matches.count, static_cast<u64>(std::ranges::count(found, ' ')) + (found.empty() ? 0 : 1)) << path;
        return found;
    }

    [[nodiscard]] std::string answersTo(const char* path, AnswerLayout layout) const {
        std::string text;
        const TextSink sink = [&](std::string_view piece) { text += piece; };
        forEachMatch(scene, parsePath(path), [&](const PathMatch& match) { writeAnswer(match, layout, sink); });
        return text;
    }
};

} // namespace

TEST_F(Paths, leadToNodesInputsAndElements) {
    const struct {
        const char* path;
        const char* matches;
    } cases[] = {
        {"cam1", "cam1"},
        {"cam1.fov", "cam1.fov"},
        {"*.fov", "cam1.fov cam2.fov"},
        {"*", "cam1 cam2 m"},
        {"cam?", "cam1 cam2"},
        {"cam1.type", "cam1.type"},
        {"*.type", "cam1.type cam2.type m.type"},
        {"m.name", "m.name"},
        {"m.o.name", "m.o.name"},
        {"m.p[-1]", "m.p[3]"},
        {"m.p[1:]", "m.p[1:4]"},
        {"m.p[3:1]", "m.p[3:3]"},
        {"m.p[9]", ""},
        {"m.w[-1]", "m.w[2]"},
        {"m.w[0:2]", "m.w[0:2]"},
        {"m.uv[0].name", "m.uv[0].name"},
        {"m.uv[*].name", "m.uv[0].name m.uv[1].name"},
        {"m.uv[1:].name", "m.uv[1].name"},
        {"m.o.*.q", "m.o.p.q"},
        {"m.*[0]", "m.p[0] m.w[0] m.uv[0]"},
        {"m.p.count", "m.p.count"},
        {"m.*.count", "m.p.count m.w.count m.uv.count"},
        {"x", ""},
        {"m.o.count", ""},
        {"m.p.count.x", ""},
        {"m.p.coun?", ""},
        {"m.o[0]", ""},
        {"m.w.x", ""},
        {"m.type.x", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(matchesOf(c.path), c.matches) << c.path;
}

TEST_F(Paths, tellPropertiesOfNodesFromInputs) {
    const auto kindOf = [&](const char* path) {
        std::optional<PathMatch::Kind> kind;
        forEachMatch(scene, parsePath(path), [&](const PathMatch& match) { kind = match.kind; });
        return kind;
    };
    using Kind = PathMatch::Kind;
    EXPECT_EQ(kindOf("cam1"), Kind::Node);
    EXPECT_EQ(kindOf("cam1.type"), Kind::NodeType);
    EXPECT_EQ(kindOf("cam2.type"), Kind::Input); // an input of that name
    EXPECT_EQ(kindOf("cam2.name"), Kind::NodeName);
    EXPECT_EQ(kindOf("m.p.count"), Kind::Count);
    EXPECT_EQ(kindOf("m.p[0]"), Kind::BufferElement);
    EXPECT_EQ(kindOf("m.w[0]"), Kind::Input); // elements of arrays are inputs
    EXPECT_EQ(kindOf("m.w[:]"), Kind::Slice);
    EXPECT_EQ(kindOf("m.p[:]"), Kind::Slice);
}

TEST_F(Paths, thatLeadNowhereSaySo) {
    const struct {
        const char* path;
        const char* reason;
    } cases[] = {
        {"cam9", "not found: the scene has no such node; did you mean cam1 or cam2?"},
        {"z*", "not found: the scene has no such node"},
        {"cam1.fvo", "not found below cam1; did you mean fov?"},
        {"*.fvo", "not found below *; did you mean fov?"},
        {"m.o.p.x", "not found below m.o.p"},
        {"m.uv[0].nme", "not found below m.uv[0]; did you mean name?"},
        {"m.p[4]", "not found below m.p"},
    };
    for (const auto& c : cases) {
        const ScenePath path = parsePath(c.path);
        const PathMatches matches = forEachMatch(scene, path, [](const PathMatch&) {});
        EXPECT_EQ(matches.count, 0U) << c.path;
        EXPECT_EQ(notFoundText(scene, path, matches), c.reason) << c.path;
    }
}

TEST_F(Paths, areUsedForSeveralScenes) {
    const ScenePath path = parsePath("a.x");
    for (const char* text : {"t a; a.x = 1;", "t b; b.x = 1;"}) {
        const Reading other = readText(text);
        EXPECT_EQ(forEachMatch(*other.scene, path, [](const PathMatch&) {}).count, text[2] == 'a' ? 1U : 0U);
    }
}

TEST_F(Paths, passExceptionsOfTheVisitorOn) {
    u64 visited = 0;
    const auto stop = [&](const PathMatch&) {
        ++visited;
        throw std::out_of_range("enough");
    };
    EXPECT_THROW(forEachMatch(scene, parsePath("*.fov"), stop), std::out_of_range);
    EXPECT_EQ(visited, 1U);
}

TEST_F(Paths, areAnsweredAsTextAndJson) {
    EXPECT_EQ(answersTo("cam1.s", {}), "two\nlines\t\n");
    EXPECT_EQ(answersTo("cam1.s", {.isEscaped = true}), "two\\nlines\\t\n");
    EXPECT_EQ(answersTo("cam1.s", {.isLabelled = true}), "cam1.s\ttwo\\nlines\\t\n");
    EXPECT_EQ(answersTo("m.p[1:3]", {.isLabelled = true}), "m.p[1]\t3 4 5\nm.p[2]\t6 7 8\n");
    EXPECT_EQ(answersTo("m.w", {}), "1.5\n2.5\n3.5\n");
    std::string text;
    const TextSink sink = [&](std::string_view piece) { text += piece; };
    forEachMatch(scene, parsePath("m.*[0]"), [&](const PathMatch& match) { writeAnswerJson(match, sink); });
    forEachMatch(scene, parsePath("cam2.name"), [&](const PathMatch& match) { writeAnswerJson(match, sink); });
    EXPECT_EQ(text, "{\"path\":\"m.p[0]\",\"type\":\"Vec3f\",\"value\":[0,1,2]}\n"
                    "{\"path\":\"m.w[0]\",\"type\":\"Real\",\"value\":1.5}\n"
                    "{\"path\":\"m.uv[0]\",\"type\":\"Object\",\"value\":{\"name\":\"u\"}}\n"
                    "{\"path\":\"cam2.name\",\"type\":\"String\",\"value\":\"cam2\"}\n");
}

TEST(ScenePath, isParsedIntoParts) {
    const ScenePath path = parsePath("box*.uv[-1].co?[2:].x[:3][*]");
    ASSERT_EQ(path.parts.size(), 8U);
    EXPECT_EQ(path.text, "box*.uv[-1].co?[2:].x[:3][*]");
    EXPECT_TRUE(path.parts[0].isPattern);
    EXPECT_FALSE(path.parts[1].isPattern);
    EXPECT_FALSE(path.parts[2].isSlice);
    EXPECT_EQ(path.parts[2].first, -1);
    EXPECT_EQ(path.parts[3].name, "co?");
    EXPECT_EQ(path.parts[4].first, 2);
    EXPECT_EQ(path.parts[4].last, std::nullopt);
    EXPECT_EQ(path.text.substr(0, path.parts[5].end), "box*.uv[-1].co?[2:].x");
    EXPECT_TRUE(path.parts.back().isSlice);
    EXPECT_EQ(path.parts.back().end, path.text.size());
}

TEST(ScenePath, isAPatternIfItMayMatchSeveralInputs) {
    for (const char* path : {"*", "a?.b", "a.b*", "a[:].b", "a[*][0]"})
        EXPECT_TRUE(parsePath(path).isPattern()) << path;
    for (const char* path : {"a", "a.b[0].c", "a.b[0:5]", "a.b[*]"})
        EXPECT_FALSE(parsePath(path).isPattern()) << path;
}

TEST(ScenePath, reportsTheByteThatIsWrong) {
    const struct {
        const char* path;
        const char* reason;
    } cases[] = {
        {"", "at byte 1: expected a name"},
        {"a..b", "at byte 3: expected a name"},
        {"a[]", "at byte 3: expected an index, a slice such as 2:5, or *"},
        {"a[1", "at byte 4: expected ]"},
        {"a[1]b", "at byte 5: expected . or ["},
        {"a[99999999999999999999]", "at byte 3: invalid index"},
        {"a[-]", "at byte 3: invalid index"},
    };
    for (const auto& c : cases) {
        try {
            (void)parsePath(c.path);
            ADD_FAILURE() << c.path;
        } catch (const PathError& error) {
            EXPECT_STREQ(error.what(), c.reason) << c.path;
        }
    }
}

} // namespace vrn::test

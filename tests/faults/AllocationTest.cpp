// What is left of a scene when there is no memory: each allocation of a parse fails in its turn.
#include "impl/Reader.h"
#include "scene/CatalogueJson.h"
#include "scene/SceneJson.h"
#include "tests/faults/Allocations.h"
#include "tests/support/Invariants.h"
#include "tests/support/Reading.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace vrn::test {

namespace {

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The texts that cover each form of statement and value, those that are refused among them.
std::vector<std::pair<std::string, String>> texts() {
    std::vector<std::pair<std::string, String>> found;
    for (const char* folder : {"accept", "reject"})
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(VRN_TEST_DATA) / folder))
            if (entry.path().extension() == ".vrn" && entry.file_size() < 20000)
                found.emplace_back(entry.path().filename(), String(std::string_view(contentsOf(entry.path()))));
    found.emplace_back("many of each", [] {
        std::string text;
        for (int i = 0; i < 40; ++i) {
            const std::string n = std::to_string(i);
            text += "some_type_of_a_long_name node" + n + ";\nnode" + n + ".x" + n + " = vec3(1, 2, 3);\nnode0.in" + n +
                    " |= node" + n + ".out;\nnode0.ref" + n + " = node" + n + ";\nnode0.list[" + n + "].s = \"a text " +
                    n + " that is not short\";\nnode0.b[*] = float[3] {1 2, 3};\n# a comment " + n + "\n";
        }
        return String(std::string_view(text));
    }());
    return found;
}

const char* const catalogueText = R"({"types": {"camera": {"inputs": {"fov": {"type": "Real", "default": 45.0},
    "kind": {"type": "String", "default": "perspective", "enum": ["perspective", "orthographic"]},
    "curve": {"type": "Buffer", "dataType": "Vec2f"}, "up": {"type": "Vec3", "default": [0, 1, 0]},
    "a_list_of_a_long_name": {"type": "Array", "elementType": "Node"}}, "outputs": ["image", "depth"],
    "renamedInputs": {"fovy": "fov"}, "renamedOutputs": {"result": "image"}}}})";

// Errors alone, for which a sink needs no memory.
struct Errors {
    std::size_t count = 0;
    ScopedLogSink sink{[this](const LogRecord& record) { count += record.severity == LogSeverity::Error ? 1 : 0; }};
};

enum class Outcome { Read, Refused, NoMemory };

template <class Work> Outcome outcomeOf(Work work) {
    try {
        return work() ? Outcome::Read : Outcome::Refused;
    } catch (const std::bad_alloc&) {
        return Outcome::NoMemory;
    } catch (const std::runtime_error&) {
        return Outcome::Refused;
    }
}

std::string jsonOf(const Scene& scene) {
    std::string json;
    writeSceneJson(scene, {.isCompact = true}, [&](std::string_view piece) { json += piece; });
    return json;
}

// A scene is still good for everything that scenes are good for.
void expectUsable(Scene& scene) {
    ASSERT_EQ(brokenInvariant(scene), "");
    ASSERT_NE(jsonOf(scene), "");
    ASSERT_TRUE(parseString(&scene, "fresh the_fresh_node; the_fresh_node.x[2].y = \"a text that is not short\";"
                                    "the_fresh_node.c |= the_fresh_node.out;"));
    ASSERT_EQ(brokenInvariant(scene), "");
    while (scene.nodeCount() != 0)
        scene.removeNode(scene.nodes().begin()->name());
}

std::size_t failures = 0;

// Calls `once(n)`, in which the nth allocation fails, until none does. The first calls also fail what is made once
// for the whole process; leaks are looked for when that is there.
template <class Once> void failEach(Once once) {
    for (int round = 0; round < 2; ++round)
        for (std::size_t n = 1; !testing::Test::HasFatalFailure(); ++n) {
            const std::size_t before = liveBlocks();
            if (!once(n))
                break;
            ++failures;
            if (round == 1) {
                ASSERT_EQ(liveBlocks(), before) << "a leak when allocation " << n << " fails";
            }
        }
}

class AllocationFaults : public testing::TestWithParam<Failing> {};

} // namespace

TEST_P(AllocationFaults, leaveAScene) {
    failures = 0;
    for (const auto& [name, text] : texts()) {
        SCOPED_TRACE(name);
        Reading whole;
        whole.run([&] { return parseString(whole.scene.get(), text); });
        const std::string expected = jsonOf(*whole.scene);
        failEach([&](std::size_t n) {
            Errors errors;
            Scene scene;
            failAllocation(n, GetParam());
            const Outcome outcome = outcomeOf([&] { return parseString(&scene, text); });
            const bool hasFailed = stopFailing();
            // What was read without a word is what is there.
            if (outcome == Outcome::Read && errors.count == 0) {
                EXPECT_EQ(jsonOf(scene), expected) << n;
            }
            expectUsable(scene);
            return hasFailed;
        });
    }
    EXPECT_GT(failures, 3000U) << "texts take memory";
}

TEST_P(AllocationFaults, leaveASceneReadFromAFile) {
    for (const auto& [name, text] : texts()) {
        SCOPED_TRACE(name);
        failEach([&](std::size_t n) {
            Errors errors;
            Scene scene;
            failAllocation(n, GetParam());
            (void)outcomeOf([&] { return parseVrn(&scene, File::fromMemory(text), false); });
            const bool hasFailed = stopFailing();
            expectUsable(scene);
            return hasFailed;
        });
    }
}

TEST_P(AllocationFaults, leaveASceneWithACatalogue) {
    failEach([&](std::size_t n) {
        Errors errors;
        Scene scene;
        failAllocation(n, GetParam());
        (void)outcomeOf([&] {
            scene.setCatalogue(std::make_shared<const Catalogue>(readCatalogue(catalogueText)));
            return parseString(&scene, "define camera; camera c; c.fovy = 2; c.kind = \"fisheye\"; c.x |= c.result;"
                                       "other o; o.y |= c.image; remove c;");
        });
        const bool hasFailed = stopFailing();
        expectUsable(scene);
        return hasFailed;
    });
}

TEST_P(AllocationFaults, leaveASceneThatIsWrittenOut) {
    Scene scene;
    ASSERT_TRUE(parseString(&scene, "t a; a.x[3].y = vec3(1 2 3); a.b = float[2] {1 2}; a.n = a;"));
    failEach([&](std::size_t n) {
        failAllocation(n, GetParam());
        const Outcome outcome = outcomeOf([&] {
            writeSceneJson(scene, {}, [](std::string_view) {});
            return true;
        });
        const bool hasFailed = stopFailing();
        EXPECT_TRUE(!hasFailed || outcome == Outcome::NoMemory);
        EXPECT_EQ(brokenInvariant(scene), "");
        return hasFailed;
    });
}

INSTANTIATE_TEST_SUITE_P(, AllocationFaults, testing::Values(Failing::One, Failing::AllBehindIt));

} // namespace vrn::test

// Out-of-memory tests: each allocation of a parse fails in turn, and the scene has to stay consistent.
#include "impl/Reader.h"
#include "scene/CatalogueJson.h"
#include "scene/SceneJson.h"
#include "scene/core/Hash.h"
#include "tests/faults/Allocations.h"
#include "tests/support/Invariants.h"
#include "tests/support/Reading.h"
#include "tests/support/Sources.h"
#include "tests/support/Texts.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

namespace vrn::test {

namespace {

// Inputs that cover each form of statement and value, invalid ones included.
std::vector<std::pair<std::string, String>> texts() {
    std::vector<std::pair<std::string, String>> found;
    for (const std::filesystem::path& path : goldenTexts())
        if (std::filesystem::file_size(path) < 20000)
            found.emplace_back(path.filename(), String(std::string_view(contentOf(path))));
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

// Records the hashes of errors, so that the sink allocates nothing.
struct Errors {
    std::array<u64, 100> hashes{};
    std::size_t count = 0;
    ScopedLogSink sink{[this](const LogRecord& record) {
        if (record.severity == LogSeverity::Error && count < hashes.size())
            hashes[count++] = keyedHash(record.text.view());
    }};

    [[nodiscard]] std::vector<u64> all() const { return {hashes.begin(), hashes.begin() + static_cast<long>(count)}; }
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

// The scene can still be traversed, written, read into and emptied.
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

// Calls `once(n)`, in which the nth allocation fails, until none fails. The first round also creates static variables
// of the process; leaks are checked in the second.
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

// Calls `read(scene)` with each allocation failing in turn. It must throw std::bad_alloc, log an additional error, or
// have the same result as without the failure.
template <class Read> void expectNothingLost(Read read) {
    struct Result {
        Outcome outcome = Outcome::Read;
        std::vector<u64> errors;
        std::string json;
        bool operator==(const Result&) const = default;
    };
    const auto attempt = [&](std::size_t n, Scene& scene, Failing which, bool& hasFailed) {
        Errors errors;
        failAllocation(n, which);
        Result result;
        result.outcome = outcomeOf([&] { return read(scene); });
        hasFailed = stopFailing();
        result.errors = errors.all();
        result.json = jsonOf(scene);
        return result;
    };
    bool hasFailed = false;
    Scene whole;
    const Result clean = attempt(0, whole, Failing::One, hasFailed);
    failEach([&](std::size_t n) {
        Scene scene;
        const Result result = attempt(n, scene, testing::WithParamInterface<Failing>::GetParam(), hasFailed);
        const bool hasNewError = std::ranges::any_of(
            result.errors, [&](u64 error) { return std::ranges::find(clean.errors, error) == clean.errors.end(); });
        EXPECT_TRUE(result.outcome == Outcome::NoMemory || hasNewError || result == clean) << n;
        Errors errors;
        expectUsable(scene);
        return hasFailed;
    });
}

TEST_P(AllocationFaults, leaveAScene) {
    failures = 0;
    for (const auto& [name, text] : texts()) {
        SCOPED_TRACE(name);
        expectNothingLost([&](Scene& scene) { return parseString(&scene, text); });
    }
    EXPECT_GT(failures, 1500U) << "reading allocates";
}

TEST_P(AllocationFaults, leaveASceneReadFromAFile) {
    for (const auto& [name, text] : texts()) {
        SCOPED_TRACE(name);
        expectNothingLost([&](Scene& scene) { return parseVrn(&scene, File::fromMemory(text), false); });
    }
}

// What can be read from the file after the failure is the end of the text.
TEST_P(AllocationFaults, loseNoBytesOfAFile) {
    const std::string text = std::string(texts().back().second.view()) + " n.s = \"" + std::string(2000, 's') + "\";";
    failEach([&](std::size_t n) {
        Scene scene;
        std::string left;
        left.reserve(text.size());
        bool hasFailed = false;
        {
            Errors errors;
            File file;
            failAllocation(n, GetParam());
            (void)outcomeOf([&] {
                file = File::fromSource(std::make_unique<Blocks>(text, 100), 128);
                return parseVrn(&scene, file, false);
            });
            hasFailed = stopFailing();
            for (char c = 0; file.read(c);)
                left += c;
        }
        EXPECT_TRUE(text.ends_with(left)) << n;
        return hasFailed;
    });
}

TEST_P(AllocationFaults, leaveASceneReadWithNotices) {
    for (const auto& [name, text] : texts()) {
        SCOPED_TRACE(name);
        expectNothingLost([&](Scene& scene) {
            u64 errors = 0;
            bool isRead = false;
            {
                const ScopedLogSink sink(
                    [&](const LogRecord& record) {
                        errors += record.severity == LogSeverity::Error ? keyedHash(record.text.view()) : 0;
                    },
                    Notices::Yes);
                isRead = parseString(&scene, text);
            }
            if (errors != 0)
                logError("%llu", static_cast<unsigned long long>(errors));
            return isRead;
        });
    }
}

TEST_P(AllocationFaults, leaveASceneWithACatalogue) {
    expectNothingLost([&](Scene& scene) {
        scene.setCatalogue(std::make_shared<const Catalogue>(readCatalogue(catalogueText)));
        return parseString(&scene, "define camera; camera c; c.fovy = 2; c.kind = \"fisheye\"; c.x |= c.result;"
                                   "other o; o.y |= c.image; remove c;");
    });
}

static std::size_t openDescriptors() {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += entry.is_symlink() ? 1U : 0U;
    return count;
}

TEST_P(AllocationFaults, loseNoDescriptor) {
    const String path = (std::filesystem::path(VRN_TEST_DATA) / "accept/004_declarations.vrn").c_str();
    const std::size_t before = openDescriptors();
    expectNothingLost([&](Scene& scene) {
        const File file = File::open(path);
        return file.isOpen() && parseVrn(&scene, file, false);
    });
    EXPECT_EQ(openDescriptors(), before);
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

TEST_P(AllocationFaults, leaveBuffersThatAreShared) {
    const auto memory = std::make_shared<const std::array<float, 3>>();
    const AttrData zeros = AttrData::buffer(DataType::Float, 3);
    const std::function<void(AttrData&)> uses[] = {
        [](AttrData& data) { (void)data.share(); },
        [](AttrData& data) { data.elements<float>()[0] = 1; },
        [](AttrData& data) { data.resize(2); },
        [](AttrData& data) { data.resize(1000); },
    };
    for (const auto& use : uses)
        for (const bool isAdopted : {false, true})
            failEach([&](std::size_t n) {
                AttrData data = isAdopted ? AttrData::adopt(DataType::Float, 3, memory->data(), memory) : zeros;
                const AttrData view = data.share();
                failAllocation(n, GetParam());
                const Outcome outcome = outcomeOf([&] {
                    use(data);
                    return true;
                });
                const bool hasFailed = stopFailing();
                EXPECT_EQ(hasFailed, outcome == Outcome::NoMemory);
                if (hasFailed) {
                    EXPECT_EQ(data, zeros);
                }
                EXPECT_EQ(view, zeros);
                return hasFailed;
            });
    failEach([&](std::size_t n) {
        const AttrData data = zeros;
        failAllocation(n, GetParam());
        (void)outcomeOf([&] {
            const AttrData adopted = AttrData::adopt(DataType::Float, 3, memory->data(), memory);
            return data.share() == adopted;
        });
        const bool hasFailed = stopFailing();
        EXPECT_EQ(data, zeros);
        EXPECT_EQ(memory.use_count(), 1);
        return hasFailed;
    });
}

INSTANTIATE_TEST_SUITE_P(, AllocationFaults, testing::Values(Failing::One, Failing::AllAfterIt));

} // namespace vrn::test

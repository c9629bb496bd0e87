// Concurrent reads from the first use in a process; meant for the thread sanitizer.
#include "impl/Reader.h"
#include "scene/CatalogueJson.h"
#include "scene/SceneJson.h"
#include "tests/support/Reading.h"

#include <algorithm>
#include <atomic>
#include <barrier>
#include <thread>

namespace vrn::test {

namespace {

constexpr int threadCount = 8;

// Starts all threads together.
template <class Work> void onAllThreads(Work work) {
    std::barrier start(threadCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            work(i);
        });
    for (std::thread& thread : threads)
        thread.join();
}

std::string textOf(int thread) {
    const std::string n = std::to_string(thread);
    std::string text = "# version: " + n + "\nmesh a_node_of_a_long_name" + n + ":\n";
    for (int i = 0; i < 50; ++i) {
        const std::string k = std::to_string(i);
        text += ".points" + k + " = vec3f[20] {" + n + " 1.5 -2e3 0.1234567890123456789};\n.list[" + k +
                "].s = \"a text that is shared by nobody\";\n.colour" + k + " = rgba(1 0.5 " + n + ");\n.data" + k +
                " = byte[4] {.789C4B4C4A06000" + "24d0127};\n.in" + k + " |= a_node_of_a_long_name" + n + ".out" + k +
                ";\n";
    }
    return text + ".bad = float[1] {1};\n.bad = \"of another type\";\n";
}

struct Result {
    bool isOk = false;
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::string json;
    friend bool operator==(const Result&, const Result&) = default;
};

Result read(const String& text, std::shared_ptr<const Catalogue> catalogue = nullptr) {
    Result result;
    const ScopedLogSink sink([&](const LogRecord& record) {
        (record.severity == LogSeverity::Error ? result.errors : result.warnings) += 1;
    });
    Scene scene;
    scene.setCatalogue(std::move(catalogue));
    result.isOk = parseString(&scene, text);
    writeSceneJson(scene, {.isCompact = true}, [&](std::string_view piece) { result.json += piece; });
    return result;
}

// A text without an end.
class EndlessSource final : public ByteSource {
public:
    std::size_t read(char* buffer, std::size_t capacity, String&) override {
        constexpr std::string_view statement = "t a; a.x = 1;\n";
        return statement.copy(buffer, capacity);
    }
};

} // namespace

// Must be the first test of the process, so that eight threads race to initialise its static variables.
TEST(Threads, readTheirOwnScenesFromTheFirstUseOn) {
    Result results[threadCount];
    onAllThreads([&](int i) { results[i] = read(std::string_view(textOf(i))); });
    for (int i = 0; i < threadCount; ++i) {
        EXPECT_TRUE(results[i].isOk);
        EXPECT_EQ(results[i].errors, 1U) << "a value of another type";
        EXPECT_EQ(results[i], read(std::string_view(textOf(i))));
    }
}

TEST(Threads, shareTheirTextsAndCatalogues) {
    const String text =
        std::string_view("camera a; a.fovy = 2; a.s = \"a text of more than fifteen letters\"; a.x |= a.out;"
                         "a.kind = \"none of these\";");
    const auto catalogue = std::make_shared<const Catalogue>(
        readCatalogue(R"({"types": {"camera": {"inputs": {"fov": {"type": "Real", "default": 45.0},
            "kind": {"type": "String", "enum": ["one kind of camera", "another kind"]}},
            "outputs": ["out"], "renamedInputs": {"fovy": "fov"}}}})"));
    const Result expected = read(text, catalogue);
    EXPECT_EQ(expected.warnings, 1U);
    onAllThreads([&](int) {
        for (int n = 0; n < 50; ++n)
            EXPECT_EQ(read(text, catalogue), expected);
    });
}

TEST(Threads, shareHandlesOfTexts) {
    const String shared = "a text of more than fifteen letters";
    onAllThreads([&](int i) {
        std::vector<String> copies;
        for (int n = 0; n < 1000; ++n) {
            copies.push_back(shared);
            if (n % 3 == i % 3)
                copies.clear();
        }
        EXPECT_EQ(shared, "a text of more than fifteen letters");
    });
}

TEST(Threads, lookAtOneScene) {
    Scene scene;
    ASSERT_TRUE(parseString(&scene, "t a; t b; t c; a.x = b; a.y |= c.out; b.points = float[3] {1 2 3};"));
    const Scene& whole = scene;
    onAllThreads([&](int) {
        for (int n = 0; n < 200; ++n) {
            EXPECT_EQ(whole.findNode("a")->input("x")->nodeValue(), whole.findNode("b"));
            EXPECT_EQ(whole.findNode("b")->input("points")->value().elements<float>()[2], 3);
            std::size_t size = 0;
            writeSceneJson(whole, {}, [&](std::string_view piece) { size += piece.size(); });
            EXPECT_GT(size, 100U);
        }
    });
}

// Threads take views of one value at the same time, and give them up while its scene is changed and destroyed.
TEST(Threads, shareBuffers) {
    for (int round = 0; round < 50; ++round) {
        auto scene = std::make_unique<Scene>();
        ASSERT_TRUE(parseString(scene.get(), "t a; a.b = float[3] {1 2 3};"));
        Input& input = *scene->findNode("a")->input("b");
        const AttrData& value = input.value();
        std::barrier taken(threadCount);
        onAllThreads([&](int i) {
            AttrData view = value.share();
            const AttrData second = std::as_const(view);
            EXPECT_EQ(second.elements<float>().data(), value.elements<float>().data());
            taken.arrive_and_wait();
            if (i == 0) {
                input.elements<float>()[1] = 9;
                input.resizeBuffer(2);
                input.elements<float>()[0] = 8;
                scene.reset();
            } else if (i % 2 == 0) {
                view.elements<float>()[2] = static_cast<float>(i);
            }
            EXPECT_EQ(second.elements<float>()[1], 2);
            EXPECT_EQ(second.elements<float>()[2], 3);
        });
    }
}

// The last view is given up by another thread; then the value is written in place.
TEST(Threads, writeBuffersThatTheyNoLongerShare) {
    AttrData value = AttrData::buffer(DataType::Float, 1000);
    const std::byte* const block = std::as_const(value).bytes().data();
    std::atomic<bool> isReleased = false;
    std::thread reader([&isReleased, view = value.share()]() mutable {
        float sum = 0;
        for (const float number : std::as_const(view).elements<float>())
            sum += number;
        EXPECT_EQ(sum, 0);
        view = AttrData();
        isReleased.store(true, std::memory_order_relaxed); // orders nothing: the count of the owners must
    });
    while (!isReleased.load(std::memory_order_relaxed))
        std::this_thread::yield();
    std::ranges::fill(value.elements<float>(), 1.0F);
    EXPECT_EQ(std::as_const(value).bytes().data(), block);
    reader.join();
}

// Endless, unless the request is noticed.
TEST(Threads, stopTheReadsOfOthers) {
    File files[threadCount];
    for (File& file : files)
        file = File::fromSource(std::make_unique<EndlessSource>());
    onAllThreads([&](int i) {
        const ScopedLogSink silent([](const LogRecord&) {});
        if (i % 2 == 0) {
            Scene scene;
            EXPECT_FALSE(parseVrn(&scene, files[i], false));
            EXPECT_TRUE(files[i].isStopped());
        } else {
            files[i - 1].requestStop();
        }
    });
}

// Each thread receives its own log records only.
TEST(Threads, hearTheirOwnLog) {
    onAllThreads([&](int i) {
        std::vector<std::string> heard;
        const ScopedLogSink sink([&](const LogRecord& record) { heard.emplace_back(record.text.view()); },
                                 i % 2 == 0 ? Notices::Yes : Notices::No);
        for (int n = 0; n < 100; ++n) {
            logWarning("%d", i);
            logNotice({1, 1}, "%d", i);
        }
        EXPECT_EQ(heard, std::vector<std::string>(i % 2 == 0 ? 200 : 100, std::to_string(i)));
    });
}

} // namespace vrn::test

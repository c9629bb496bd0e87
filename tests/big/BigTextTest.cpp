// Inputs of more than 2 GiB, or 4. Most of it is blanks, so that the scene stays small.
#include "impl/Reader.h"
#include "scene/Scene.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk::impl;

static constexpr u64 blanks = (u64(1) << 31) + 1000;
static constexpr std::string_view head = "t a;\na.x = 1;\n";
static constexpr std::string_view tail = "\na.y = 2;\nt b; b.in |= a.out;\n?";

class BigSource final : public ByteSource {
public:
    std::size_t read(char* buffer, std::size_t capacity, String&) override {
        const u64 bulkEnd = head.size() + blanks;
        if (at_ < head.size())
            return copy(head.substr(at_), buffer, capacity);
        if (at_ >= bulkEnd)
            return copy(tail.substr(at_ - bulkEnd), buffer, capacity);
        const std::size_t count = std::min<u64>(capacity, bulkEnd - at_);
        std::fill_n(buffer, count, ' ');
        at_ += count;
        return count;
    }

private:
    std::size_t copy(std::string_view text, char* buffer, std::size_t capacity) {
        const std::size_t count = text.copy(buffer, capacity);
        at_ += count;
        return count;
    }
    u64 at_ = 0;
};

static void expectWhole(const Scene& scene, bool isOk, const std::vector<LogRecord>& log) {
    EXPECT_FALSE(isOk);
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0].text, "INVALID TOKEN (5,20): '?'");
    EXPECT_EQ(scene.findNode("a")->input("x")->value().asInt(), 1);
    EXPECT_EQ(scene.findNode("a")->input("y")->value().asInt(), 2);
    EXPECT_NE(scene.findNode("b"), nullptr);
}

TEST(BigText, isReadFromAFile) {
    Scene scene;
    std::vector<LogRecord> log;
    const ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
    const bool isOk = parseVrn(&scene, File::fromSource(std::make_unique<BigSource>()), false);
    expectWhole(scene, isOk, log);
}

TEST(BigText, isReadFromMemory) {
    String text;
    {
        std::string bytes;
        bytes.reserve(head.size() + blanks + tail.size());
        bytes += head;
        bytes.append(blanks, ' ');
        bytes += tail;
        text = std::string_view(bytes);
    }
    Scene scene;
    std::vector<LogRecord> log;
    const ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
    const bool isOk = parseString(&scene, text);
    expectWhole(scene, isOk, log);
}

// The pages that are not written stay empty: NUL bytes, which are blanks.
TEST(BigText, isReadFromForeignMemory) {
    constexpr std::size_t size = (std::size_t(1) << 32) + 1000;
    void* const mapped =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    char* const bytes = static_cast<char*>(mapped);
    std::ranges::copy(head, bytes);
    std::ranges::copy(tail, bytes + size - tail.size());
    bool isReleased = false;
    std::shared_ptr<const void> keeper(mapped, [&](const void*) { isReleased = ::munmap(mapped, size) == 0; });
    Scene scene;
    std::vector<LogRecord> log;
    const ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
    File file = File::fromMemory({bytes, size}, std::move(keeper));
    const bool isOk = parseVrn(&scene, file, false);
    expectWhole(scene, isOk, log);
    file = {};
    EXPECT_TRUE(isReleased);
}

} // namespace vrn::test

#include "scene/core/File.h"
#include "tests/support/Reading.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace vrn::test {

static std::string readAll(File& file) {
    std::string text;
    for (signed char c; file.read(c);)
        text += static_cast<char>(c);
    return text;
}

struct TemporaryFile {
    explicit TemporaryFile(const std::string& text)
        : path(std::filesystem::temp_directory_path() / ("vrn_test_" + std::to_string(::getpid()))) {
        std::ofstream(path, std::ios::binary) << text;
    }
    ~TemporaryFile() { std::filesystem::remove(path); }
    std::filesystem::path path;
};

TEST(File, readsAPathToItsEnd) {
    std::string text;
    for (int i = 0; i < 700000; ++i)
        text += static_cast<char>(i * 7);
    const TemporaryFile temporary(text);
    File file = File::open(temporary.path.c_str());
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(readAll(file), text);
    signed char c = 5;
    EXPECT_FALSE(file.read(c));
    EXPECT_EQ(c, 5);
    EXPECT_EQ(file.error(), "");
}

TEST(File, reportsWhyItDoesNotOpen) {
    File file = File::open("/nonexistent/file.vrn");
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.error(), "No such file or directory");
    char c = 0;
    EXPECT_FALSE(file.read(c));
    EXPECT_FALSE(File::open(String("a\0b", 3)).isOpen());
    EXPECT_FALSE(File().isOpen());
}

TEST(File, reportsWhyItCannotBeRead) {
    File file = File::open("/");
    EXPECT_TRUE(file.isOpen());
    char c = 0;
    EXPECT_FALSE(file.read(c));
    EXPECT_EQ(file.error(), "Is a directory");
}

TEST(File, reportsEachBlockThatIsFetched) {
    const TemporaryFile temporary(std::string(File::defaultBlockSize + 5, 'x'));
    File file = File::open(temporary.path.c_str());
    std::vector<std::size_t> fetched;
    file.onFetch([&](std::size_t bytes) { fetched.push_back(bytes); });
    EXPECT_TRUE(fetched.empty());
    EXPECT_EQ(readAll(file).size(), File::defaultBlockSize + 5);
    EXPECT_EQ(fetched, (std::vector<std::size_t>{File::defaultBlockSize, 5}));
}

TEST(File, copiesShareOnePosition) {
    File file = File::fromMemory("abc");
    File copy = file;
    char c = 0;
    EXPECT_TRUE(file.read(c));
    EXPECT_TRUE(copy.read(c));
    EXPECT_EQ(c, 'b');
    EXPECT_EQ(readAll(file), "c");
    EXPECT_FALSE(copy.read(c));
}

TEST(File, readsMemoryWithoutCopyingIt) {
    for (const char* text : {"", "short", "a text that is too long for the handle itself"}) {
        File file = File::fromMemory(text);
        EXPECT_TRUE(file.isOpen());
        EXPECT_EQ(readAll(file), text);
    }
}

namespace {

// Returns a text in pieces, then fails or ends; counts calls after that.
class Pieces final : public ByteSource {
public:
    Pieces(std::string text, bool fails, int& callsAfterTheEnd)
        : text_(std::move(text)), fails_(fails), callsAfterTheEnd_(callsAfterTheEnd) {}
    std::size_t read(char* buffer, std::size_t capacity, String& error) override {
        if (isOver_)
            ++callsAfterTheEnd_;
        const std::size_t count = std::min({capacity, text_.size() - at_, std::size_t(3)});
        text_.copy(buffer, count, at_);
        at_ += count;
        isOver_ = count == 0;
        if (isOver_ && fails_)
            error = "Input/output error";
        return count;
    }

private:
    std::string text_;
    std::size_t at_ = 0;
    bool fails_;
    bool isOver_ = false;
    int& callsAfterTheEnd_;
};

} // namespace

TEST(File, takesBytesFromASourceAndRemembersItsError) {
    for (const bool fails : {false, true}) {
        int callsAfterTheEnd = 0;
        File file = File::fromSource(std::make_unique<Pieces>("abcdefgh", fails, callsAfterTheEnd), 2);
        EXPECT_EQ(readAll(file), "abcdefgh");
        char c = 0;
        EXPECT_FALSE(file.read(c));
        EXPECT_FALSE(file.read(c));
        EXPECT_EQ(callsAfterTheEnd, 0);
        EXPECT_EQ(file.error(), fails ? "Input/output error" : "");
    }
}

namespace {

// Consumes `wanted` of the bytes that it borrows, and returns the others when it is asked.
class Reader final : public File::Borrower {
public:
    explicit Reader(std::size_t wanted) : wanted_(wanted) {}
    std::string take(File& file) {
        borrowed_ = file.borrow(*this).size();
        return "borrowed " + std::to_string(borrowed_);
    }
    std::size_t returnLoan() noexcept override { return borrowed_ - std::min(wanted_, borrowed_); }

private:
    std::size_t wanted_;
    std::size_t borrowed_ = 0;
};

} // namespace

TEST(File, lendsItsBytesUntilSomebodyElseReads) {
    int callsBehindTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>("abcdefgh", false, callsBehindTheEnd), 4);
    Reader first(1);
    Reader second(7);
    char c = 0;
    EXPECT_EQ(first.take(file), "borrowed 0") << "nothing has been fetched";
    ASSERT_TRUE(file.read(c));
    EXPECT_EQ(c, 'a');
    EXPECT_EQ(first.take(file), "borrowed 2");
    ASSERT_TRUE(file.read(c));
    EXPECT_EQ(c, 'c') << "b was consumed, c returned";
    ASSERT_TRUE(file.read(c));
    EXPECT_EQ(c, 'd');
    EXPECT_EQ(first.take(file), "borrowed 2");
    EXPECT_EQ(second.take(file), "borrowed 1") << "e was consumed";
    file.endLoan(first); // has none any more
    EXPECT_EQ(file.readBlock(), "gh") << "f was consumed";
    EXPECT_EQ(file.readBlock(), "");
    EXPECT_FALSE(file.read(c));
}

TEST(File, returnsBlocks) {
    File file = File::fromMemory("some text");
    char c = 0;
    ASSERT_TRUE(file.read(c));
    EXPECT_EQ(file.readBlock(), "ome text");
    EXPECT_EQ(file.readBlock(), "");
    Reader reader(0);
    EXPECT_EQ(reader.take(file), "borrowed 0");
    file.endLoan(reader);
    EXPECT_FALSE(file.read(c));
}

TEST(File, goesOnAfterAnObserverThatReadsTheBlock) {
    int callsBehindTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>("abcd", false, callsBehindTheEnd), 1);
    int fetched = 0;
    file.onFetch([&](std::size_t) {
        char taken = 0;
        EXPECT_TRUE(++fetched != 1 || file.read(taken));
    });
    EXPECT_EQ(readAll(file), "bcd");
    file.onFetch({}); // holds the file, which holds it
}

} // namespace vrn::test

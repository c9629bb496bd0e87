#include "scene/core/File.h"
#include "tests/support/Reading.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace vrn::test {

static std::string readAll(File& file) {
    std::string text;
    for (signed char c; file.read(c);)
        text += static_cast<char>(c);
    return text;
}

struct TemporaryFile {
    explicit TemporaryFile(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
    const TemporaryFolder folder{};
    const std::string path = folder.at("file");
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

// A handle of text keeps its NUL bytes, unless it is made of a literal.
TEST(File, readsAnyBytesFromMemory) {
    std::string bytes;
    for (int i = 0; i < 1000; ++i)
        bytes += static_cast<char>(i);
    for (const std::size_t length : {0U, 1U, 2U, 1000U}) {
        const std::string_view part = std::string_view(bytes).substr(0, length);
        File shared = File::fromMemory(part);
        File foreign = File::fromMemory(part, nullptr);
        EXPECT_TRUE(foreign.isOpen());
        EXPECT_EQ(readAll(shared), part);
        EXPECT_EQ(readAll(foreign), part);
    }
    File file = File::fromMemory("a\0b");
    EXPECT_EQ(readAll(file), "a");
}

TEST(File, reportsMemoryAsBlocks) {
    const std::string text(2 * File::defaultBlockSize + 5, 'x');
    File file = File::fromMemory(text, nullptr);
    std::vector<std::size_t> fetched;
    file.onFetch([&](std::size_t bytes) { fetched.push_back(bytes); });
    const char* expected = text.data();
    for (std::string_view block = file.readBlock(); !block.empty(); block = file.readBlock()) {
        EXPECT_EQ(block.data(), expected) << "no copy";
        expected += block.size();
    }
    EXPECT_EQ(expected, text.data() + text.size());
    EXPECT_EQ(fetched, (std::vector<std::size_t>{File::defaultBlockSize, File::defaultBlockSize, 5}));
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

// Borrows bytes and consumes some of them.
class Reader final : public File::Borrower {
public:
    explicit Reader(File file) : file_(std::move(file)) {}

    // All bytes on loan, after those that were not consumed.
    std::string_view borrow() {
        loans_.push_back(file_.borrow(*this, left_));
        left_ = loans_.back().bytes;
        return left_;
    }
    std::string_view borrowAfter(std::string_view own) {
        left_ = own;
        return borrow();
    }
    void consume(std::size_t count) { left_.remove_prefix(count); }
    [[nodiscard]] const File::Piece& loan(std::size_t i) const { return loans_[i]; }

    std::size_t returnLoan() noexcept override { return std::exchange(left_, {}).size(); }

private:
    File file_;
    std::vector<File::Piece> loans_;
    std::string_view left_;
};

} // namespace

// A borrower that needs all of it in one piece gets it in place.
TEST(File, lendsMemoryWithoutCopyingIt) {
    const std::string text(3 * File::defaultBlockSize + 5, 'x');
    Reader reader(File::fromMemory(text, nullptr));
    std::size_t length = 0;
    for (std::string_view window = reader.borrow(); window.size() != length; window = reader.borrow()) {
        EXPECT_EQ(window.data(), text.data());
        length = window.size();
    }
    EXPECT_EQ(length, text.size());
}

TEST(File, keepsMemoryAsLongAsItIsUsed) {
    const auto memory = [](std::size_t size) { return std::make_shared<const std::string>(size, 'x'); };
    const auto fileOf = [](const std::shared_ptr<const std::string>& text) { return File::fromMemory(*text, text); };
    for (const std::size_t size : {std::size_t(0), std::size_t(10), 2 * File::defaultBlockSize}) {
        auto text = memory(size);
        const std::weak_ptr<const std::string> kept = text;
        File file = fileOf(std::exchange(text, nullptr));
        EXPECT_FALSE(kept.expired()) << "not read yet";
        EXPECT_EQ(readAll(file).size(), size);
        EXPECT_TRUE(kept.expired()) << "the file is still open";
    }
    auto text = memory(2 * File::defaultBlockSize);
    const std::weak_ptr<const std::string> kept = text;
    {
        File::Piece loan;
        {
            File file = fileOf(std::exchange(text, nullptr));
            Reader reader(file);
            (void)reader.borrow();
            loan = reader.loan(0);
        }
        EXPECT_FALSE(kept.expired()) << "on loan without a file";
        EXPECT_EQ(loan.bytes.back(), 'x');
    }
    EXPECT_TRUE(kept.expired());
    {
        const File unread = fileOf(memory(10));
        const File copy = unread;
    }
}

TEST(File, stopsOnRequest) {
    const std::string text(3 * File::defaultBlockSize, 'x');
    const auto bytes = std::make_shared<const std::string>(text);
    const auto isFree = [&] { return bytes.use_count() == 1; };
    File file = File::fromMemory(*bytes, bytes);
    EXPECT_EQ(file.readBlock().size(), File::defaultBlockSize);
    File(file).requestStop(); // by any copy
    EXPECT_FALSE(file.isStopped()) << "not yet noticed";
    EXPECT_EQ(file.error(), "");
    EXPECT_EQ(file.readBlock(), "");
    EXPECT_TRUE(file.isStopped());
    EXPECT_EQ(file.error(), "stopped on request");
    EXPECT_TRUE(file.isOpen());
    EXPECT_TRUE(isFree());
    char c = 0;
    EXPECT_FALSE(file.read(c));
}

// Not even the bytes that are already there are read, and the source is not asked again.
TEST(File, stopsForItsObserver) {
    int callsAfterTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>("abcdefgh", false, callsAfterTheEnd), 3);
    int calls = 0;
    file.onFetch([&](std::size_t) {
        if (++calls == 2)
            file.requestStop();
    });
    EXPECT_EQ(readAll(file), "abc");
    EXPECT_TRUE(file.isStopped());
    EXPECT_EQ(calls, 2);
    file.onFetch({});
    const auto bytes = std::make_shared<const std::string>("memory");
    File ofMemory = File::fromMemory(*bytes, bytes);
    ofMemory.onFetch([&](std::size_t) { ofMemory.requestStop(); });
    EXPECT_EQ(ofMemory.readBlock(), "");
    EXPECT_EQ(bytes.use_count(), 1) << "released";
    ofMemory.onFetch({});
}

// The observer takes what has been fetched before it asks for the stop: as a second borrower, and partly.
TEST(File, endsTheLoansOfAnObserverThatStopsIt) {
    const std::string text = "abcdef" + std::string(10000, '.'); // more than is joined at a time
    File file = File::fromMemory(text, nullptr);
    Reader reader(file);
    Reader other(file);
    file.onFetch([&](std::size_t) {
        EXPECT_EQ(other.borrow(), text);
        other.consume(2);
        char c = 0;
        EXPECT_TRUE(file.read(c));
        EXPECT_EQ(c, 'c');
        EXPECT_TRUE(other.borrowAfter("own ").starts_with("own def"));
        file.requestStop();
    });
    EXPECT_EQ(reader.borrowAfter("left"), "left");
    EXPECT_TRUE(file.isStopped());
    EXPECT_EQ(other.returnLoan(), 0U) << "the loan has ended";
    EXPECT_EQ(file.readBlock(), "");
    file.onFetch({});
}

namespace {

std::atomic<File*> fileOfTheHandler = nullptr;
void stopInHandler(int) {
    if (File* const file = fileOfTheHandler)
        file->requestStop();
}

// A pipe, whose readers block, opened as a file; signals interrupt them.
struct Pipe {
    Pipe() {
        EXPECT_EQ(::pipe(ends), 0);
        struct sigaction action {};
        action.sa_handler = stopInHandler; // without SA_RESTART
        EXPECT_EQ(::sigaction(SIGUSR1, &action, &actionBefore), 0);
        file = File::open(String::format("/dev/fd/%d", ends[0]));
    }
    ~Pipe() {
        fileOfTheHandler = nullptr;
        file.onFetch({});
        ::sigaction(SIGUSR1, &actionBefore, nullptr);
        ::close(ends[0]);
        ::close(ends[1]);
    }
    struct sigaction actionBefore {};
    int ends[2] = {};
    File file;
};

// Sends signals to this thread until `isDone`.
template <class Work> void underSignals(const std::atomic<bool>& isDone, Work work) {
    std::thread sender([&, reader = ::pthread_self()] {
        while (!isDone) {
            ::pthread_kill(reader, SIGUSR1);
            std::this_thread::yield();
        }
    });
    work();
    sender.join();
}

} // namespace

TEST(File, stopsABlockedReadWhenASignalComes) {
    for (const bool isByHandler : {true, false}) {
        Pipe pipe;
        if (isByHandler)
            fileOfTheHandler = &pipe.file;
        else
            pipe.file.onFetch([&](std::size_t bytes) {
                EXPECT_EQ(bytes, 0U);
                pipe.file.requestStop();
            });
        std::atomic<bool> isDone = false;
        underSignals(isDone, [&] {
            EXPECT_EQ(pipe.file.readBlock(), "");
            isDone = true;
        });
        EXPECT_TRUE(pipe.file.isStopped());
        EXPECT_EQ(pipe.file.error(), "stopped on request");
    }
}

TEST(File, goesOnAfterASignal) {
    Pipe pipe;
    std::atomic<bool> isDone = false;
    pipe.file.onFetch([&](std::size_t bytes) {
        if (bytes == 0 && !isDone.exchange(true)) {
            EXPECT_EQ(::write(pipe.ends[1], "abc", 3), 3);
        }
    });
    underSignals(isDone, [&] { EXPECT_EQ(pipe.file.readBlock(), "abc"); });
    EXPECT_FALSE(pipe.file.isStopped());
    EXPECT_EQ(pipe.file.error(), "");
}

TEST(File, lendsItsBytesUntilSomebodyElseReads) {
    int callsAfterTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>("abcdefghi", false, callsAfterTheEnd), 4);
    Reader first(file);
    Reader second(file);
    EXPECT_EQ(first.borrow(), "abc");
    first.consume(1);
    char c = 0;
    ASSERT_TRUE(file.read(c));
    EXPECT_EQ(c, 'b') << "what was not consumed";
    EXPECT_EQ(first.borrow(), "c");
    first.consume(1);
    EXPECT_EQ(first.borrow(), "def");
    EXPECT_EQ(second.borrow(), "def") << "the first reader has not consumed it";
    second.consume(1);
    file.endLoan(first); // has none any more
    EXPECT_EQ(second.borrow(), "efghi");
    second.consume(2);
    EXPECT_EQ(file.readBlock(), "ghi");
    EXPECT_EQ(file.readBlock(), "");
    EXPECT_FALSE(file.read(c));
    EXPECT_EQ(second.borrow(), "");
    EXPECT_EQ(callsAfterTheEnd, 0);
}

// What a borrower has not consumed precedes the new bytes, wherever they are, and old loans stay valid.
TEST(File, lendsMoreBytesInOnePiece) {
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += std::to_string(i) + ' ';
    for (const std::size_t blockSize : {1U, 2U, 3U, 7U, 64U, 1000U, 100000U})
        for (const std::size_t keeping : {0U, 1U, 5U, 100U}) {
            int callsAfterTheEnd = 0;
            File file = File::fromSource(std::make_unique<Pieces>(text, false, callsAfterTheEnd), blockSize);
            Reader reader(file);
            std::size_t consumed = 0;
            std::size_t known = 0; // bytes that have been on loan
            for (std::size_t loans = 0;; ++loans) {
                const std::string_view window = reader.borrow();
                ASSERT_EQ(window, text.substr(consumed, window.size())) << blockSize;
                if (consumed + window.size() == known)
                    break;
                known = consumed + window.size();
                const std::size_t some = window.size() - std::min(keeping, window.size());
                reader.consume(some);
                consumed += some;
                const File::Piece& old = reader.loan(loans / 2);
                ASSERT_NE(text.find(old.bytes), std::string::npos);
            }
            EXPECT_EQ(known, text.size());
        }
}

// A reader that needs a long text in one piece causes few copies of it, however few bytes arrive at a time.
TEST(File, copiesAmortisedLinearlyToLendOnePiece) {
    const std::string text(30000, 'x');
    int callsAfterTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>(text, false, callsAfterTheEnd), 16);
    Reader reader(file);
    int moves = 0;
    for (std::string_view last, window = reader.borrow(); window.size() != last.size(); window = reader.borrow()) {
        moves += window.data() == last.data() ? 0 : 1;
        last = window;
    }
    EXPECT_EQ(reader.borrow(), text);
    EXPECT_LT(moves, 20);
}

TEST(File, lendsOnePieceAfterOthersHaveRead) {
    for (const bool isFromMemory : {false, true}) {
        int callsAfterTheEnd = 0;
        File file =
            isFromMemory
                ? File::fromMemory("abcdefghijklmnopqrstuvwxyz")
                : File::fromSource(std::make_unique<Pieces>("abcdefghijklmnopqrstuvwxyz", false, callsAfterTheEnd), 8);
        Reader reader(file);
        ASSERT_FALSE(reader.borrow().empty());
        char c = 0;
        ASSERT_TRUE(file.read(c));
        EXPECT_EQ(c, 'a');
        const std::string own = "own ";
        const File::Piece loan = file.borrow(reader, own);
        EXPECT_EQ(loan.bytes, isFromMemory ? "own bcdefghijklmnopqrstuvwxyz" : "own bc");
        file.endLoan(reader);
    }
}

// The observer takes bytes away that have just been fetched for a loan.
TEST(File, lendsOnePieceWithAnObserverThatReads) {
    int callsAfterTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>("abcdefghijkl", false, callsAfterTheEnd), 2);
    Reader reader(file);
    ASSERT_EQ(reader.borrow(), "ab");
    int fetched = 0;
    char taken = 0;
    file.onFetch([&](std::size_t) { EXPECT_TRUE(++fetched != 1 || (file.read(taken) && file.read(taken))); });
    reader.consume(1);
    EXPECT_EQ(reader.borrow(), "bef");
    EXPECT_EQ(taken, 'd');
    EXPECT_EQ(fetched, 2);
    file.onFetch({});
}

// The same with an observer that makes the file go on to further blocks.
TEST(File, lendsOnePieceWithAnObserverThatReadsBlocks) {
    int callsAfterTheEnd = 0;
    File file = File::fromSource(
        std::make_unique<Pieces>("abcdefghijklmnopqrstuvwxyz" + std::string(300, '.'), false, callsAfterTheEnd), 2);
    Reader reader(file);
    ASSERT_EQ(reader.borrow(), "ab");
    reader.consume(1);
    bool isFirst = true;
    file.onFetch([&](std::size_t) {
        if (!std::exchange(isFirst, false))
            return;
        char taken = 0;
        for (int i = 0; i < 200; ++i)
            EXPECT_TRUE(file.read(taken));
    });
    EXPECT_EQ(reader.borrow(), "b..");
    file.onFetch({});
}

TEST(File, losesNoBytesWhenAnObserverBorrows) {
    int callsAfterTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>("abcdef", false, callsAfterTheEnd), 3);
    Reader reader(file);
    Reader other(file);
    bool isFirst = true;
    file.onFetch([&](std::size_t) {
        if (std::exchange(isFirst, false)) {
            EXPECT_EQ(other.borrow(), "abc");
            other.consume(1);
        }
    });
    EXPECT_EQ(reader.borrow(), "bc");
    file.onFetch({});
}

TEST(File, lendsNothingAtItsEnd) {
    for (File file : {File::fromMemory("xyz"), File()}) {
        (void)file.readBlock();
        Reader reader(file);
        const std::string own = "own ";
        const File::Piece loan = file.borrow(reader, own);
        EXPECT_EQ(loan.bytes.data(), own.data());
        EXPECT_EQ(loan.bytes, own);
        EXPECT_EQ(file.readBlock(), "");
    }
}

// Whenever somebody else reads in between, a borrower's bytes have to be joined again: not with all that follow.
TEST(File, joinsFewBytes) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += std::to_string(i) + ' ';
    File file = File::fromMemory(std::string_view(text));
    Reader reader(file);
    std::string seen;
    std::size_t joined = 0;
    const std::string own = "own ";
    for (int i = 0; i < 10000; ++i) {
        const std::string_view window = reader.borrowAfter(own);
        joined = std::max(joined, window.size());
        const std::string_view some = window.substr(own.size(), 5);
        seen += some;
        reader.consume(own.size() + some.size());
        char c = 0;
        ASSERT_TRUE(file.read(c));
        seen += c;
    }
    EXPECT_TRUE(text.starts_with(seen));
    EXPECT_LT(joined, 5000U);
}

TEST(File, releasesItsBlocksAtTheEnd) {
    int callsAfterTheEnd = 0;
    File file = File::fromSource(std::make_unique<Pieces>(std::string(1000, 'x'), false, callsAfterTheEnd), 16);
    std::weak_ptr<const char[]> block;
    {
        Reader reader(file);
        for (std::size_t last = 1; last != reader.borrow().size();)
            last = reader.borrow().size();
        for (std::size_t i = 0; reader.loan(i).owner; ++i)
            block = reader.loan(i).owner;
        EXPECT_FALSE(block.expired());
    }
    EXPECT_TRUE(block.expired()) << "the file is still open";
}

TEST(File, returnsBlocks) {
    File file = File::fromMemory("some text");
    char c = 0;
    ASSERT_TRUE(file.read(c));
    EXPECT_EQ(file.readBlock(), "ome text");
    EXPECT_EQ(file.readBlock(), "");
    Reader reader(file);
    EXPECT_EQ(reader.borrow(), "");
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

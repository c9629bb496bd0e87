// File: a shared handle to a sequence of bytes, read from front to back.
//
//     File file = File::open("scene.vrn");
//     if (!file.isOpen())
//         report(file.error());               // "No such file or directory"
//     parseVrn(&scene, file, false);
//     if (!file.error().isEmpty())            // a failed read looks like the end of the file,
//         report(file.error());               // so check afterwards
//
// Copies share one position; the last one closes the file. Bytes are fetched in large blocks, so read() is cheap. A
// file and its copies must not be used by two threads at the same time, except for requestStop().
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace vor {

// Supplies the bytes of a File. Implement it to read from an archive, a socket or a decoder.
class VRN_API ByteSource {
public:
    virtual ~ByteSource() = default;

    // Writes up to `capacity` bytes to `buffer` and returns their number: 0 at the end, or on failure with the reason
    // in `error`. Not called again after it has returned 0.
    [[nodiscard]] virtual std::size_t read(char* buffer, std::size_t capacity, String& error) = 0;
};

class VRN_API File {
public:
    File(); // not open and empty

    // Opens the file at `path`. On failure the result is not open and error() is the reason.
    [[nodiscard]] static File open(const String& path);

    // Standard input, which is not closed.
    [[nodiscard]] static File standardInput();

    // The bytes of `text`, which is shared, not copied. It may contain NUL bytes if its length was given: a string
    // literal ends at the first one.
    [[nodiscard]] static File fromMemory(String text);

    // Bytes that belong to somebody else, such as a mapped file; they are not copied and must not change. `keeper`
    // keeps them alive until the file has been read to its end, or is gone, and no piece of it is on loan. Whichever
    // thread is the last to use them releases it. Without a keeper, the caller sees to that.
    [[nodiscard]] static File fromMemory(std::string_view bytes, std::shared_ptr<const void> keeper);

    // The bytes of `source`, requested in blocks of at most `blockSize`, and of at most maxBlockSize.
    [[nodiscard]] static File fromSource(std::unique_ptr<ByteSource> source, std::size_t blockSize = defaultBlockSize);

    [[nodiscard]] bool isOpen() const noexcept;

    // The description of the errno with which opening or reading failed, or that the reading was stopped; empty if all
    // went well.
    [[nodiscard]] String error() const;

    // Calls `observer` with the size of each block fetched from now on, on the reading thread, for progress reports.
    // Memory counts as fetched in blocks of the default size. Also calls it, with 0, when a signal interrupts a read of
    // open() or standardInput(), which goes on afterwards; the observer must not read from the file then. It must not
    // throw.
    void onFetch(std::function<void(std::size_t)> observer);

    // Asks the reader to stop: the file ends before the next block, or before the one that an observer is called for.
    // May be called on any thread, in a signal handler and in the observer, at any time; it cannot be taken back, and
    // has no effect on a file that has been read to its end.
    void requestStop() noexcept;

    // Whether the file has ended because of a request. For the reading thread.
    [[nodiscard]] bool isStopped() const noexcept;

    // Reads the next byte. At the end or on an error returns false and leaves `c` unchanged.
    [[nodiscard]] bool read(signed char& c);
    [[nodiscard]] bool read(char& c);

    // Takes the bytes that are in memory, fetching a block if there are none; empty at the end and on a read error.
    // They stay valid until the next call of any function of this file.
    [[nodiscard]] std::string_view readBlock();

    // A reader that consumes bytes in place. borrow() lends it the next bytes; whoever uses the file before the
    // borrower is done makes it return what it has not consumed, so that two readers of one file never see the same
    // byte.
    class Borrower {
    public:
        // Stops consuming the borrowed bytes and returns how many of them, counted from the end, are not consumed.
        [[nodiscard]] virtual std::size_t returnLoan() noexcept = 0;

    protected:
        ~Borrower() = default;
    };
    struct Piece {
        std::string_view bytes;
        std::shared_ptr<const char[]> owner; // keeps the bytes; null at the end
    };
    // Lends the bytes in memory, or those of a new block. `before` is the end of the borrower's last loan, or memory of
    // its own; a copy precedes the new bytes unless they already follow it. At the end of the file, returns `before` as
    // it is, and lends nothing. Amortised linear in the bytes, however few arrive at a time.
    [[nodiscard]] Piece borrow(Borrower& borrower, std::string_view before = {});

    // Ends the loan of this borrower, if it has one, through its returnLoan().
    void endLoan(Borrower& borrower) noexcept;

    static constexpr std::size_t defaultBlockSize = 256 * 1024;
    static constexpr std::size_t maxBlockSize = 1024 * 1024; // the most that is read after a request to stop

private:
    struct State;
    std::shared_ptr<State> state_;
};

struct File::State {
    std::unique_ptr<ByteSource> source; // null after it has ended or failed
    Piece memory;                       // the bytes of fromMemory() that have not been fetched
    String error;
    bool isOpen = false;
    bool isStopped = false;
    std::atomic<bool> isStopRequested = false;
    static_assert(std::atomic<bool>::is_always_lock_free, "signal handlers set it");
    struct Block {
        std::shared_ptr<char[]> bytes;
        std::size_t size = 0;
        std::size_t used = 0;
    };
    const char* next = nullptr; // the first unread bytes; none while they are on loan
    const char* end = nullptr;
    std::shared_ptr<const char[]> owner; // of these bytes
    std::vector<Piece> later;            // fetched bytes after `end` that are not in one piece with it, last first
    Borrower* borrower = nullptr;        // has the bytes before `end`
    Block block;                         // the bytes of the source that were read last
    Block spare;                         // the block before; loans may still refer to it
    std::size_t blockSize = defaultBlockSize;
    std::function<void(std::size_t)> observer;

    [[nodiscard]] bool refill();
    [[nodiscard]] bool advance(Piece& before);
    [[nodiscard]] bool fetch(Piece& before);
    [[nodiscard]] Piece fetchFromMemory() noexcept;
    [[nodiscard]] Piece fetchFromSource(Piece& before);
    [[nodiscard]] bool isOver() const noexcept { return !source && memory.bytes.empty(); }
    [[nodiscard]] bool stops();
    [[nodiscard]] std::function<bool()> signalHandler();
    void finish() noexcept;
    void startBlock(Piece& first, std::size_t space);
    void join(Piece& before);
    void endLoan() noexcept;
};

inline bool File::read(char& c) {
    State& s = *state_;
    while (s.next == s.end) // an observer may have read the block
        if (!s.refill())
            return false;
    c = *s.next++;
    return true;
}

inline bool File::read(signed char& c) {
    char byte;
    if (!read(byte))
        return false;
    c = static_cast<signed char>(byte);
    return true;
}

} // namespace vor

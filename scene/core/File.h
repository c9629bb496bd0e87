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
// file and its copies must not be used by two threads at the same time.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

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

    // The bytes of `text`, which is shared, not copied.
    [[nodiscard]] static File fromMemory(String text);

    // The bytes of `source`, requested in blocks of at most `blockSize`.
    [[nodiscard]] static File fromSource(std::unique_ptr<ByteSource> source, std::size_t blockSize = defaultBlockSize);

    [[nodiscard]] bool isOpen() const noexcept;

    // The description of the errno with which opening or reading failed; empty if neither has.
    [[nodiscard]] String error() const;

    // Calls `observer` with the size of each block fetched from now on, on the reading thread, for progress reports.
    void onFetch(std::function<void(std::size_t)> observer);

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
        std::shared_ptr<const char[]> owner; // of the bytes; null if the file itself keeps them, and at its end
    };
    // Lends the bytes in memory, or those of a new block. `before` is the end of the borrower's last loan, or memory of
    // its own; a copy precedes the new bytes unless they already follow it. At the end of the file, returns `before` as
    // it is, and lends nothing. Amortised linear in the bytes, however few arrive at a time.
    [[nodiscard]] Piece borrow(Borrower& borrower, std::string_view before = {});

    // Ends the loan of this borrower, if it has one, through its returnLoan().
    void endLoan(Borrower& borrower) noexcept;

    static constexpr std::size_t defaultBlockSize = 256 * 1024;

private:
    struct State;
    std::shared_ptr<State> state_;
};

struct File::State {
    std::unique_ptr<ByteSource> source; // null after it has ended or failed
    String error;
    bool isOpen = false;
    struct Block {
        std::shared_ptr<char[]> bytes;
        std::size_t size = 0;
        std::size_t used = 0;
    };
    const char* next = nullptr; // the first unread bytes; none while they are on loan
    const char* end = nullptr;
    std::shared_ptr<const char[]> owner; // of these bytes; null if it is `text`
    std::vector<Piece> later;            // the unread bytes after `end` that are not in one piece with it, last first
    Borrower* borrower = nullptr;        // has the bytes before `end`
    Block block;                         // the bytes of the source that were read last
    Block spare;                         // the block before; loans may still refer to it
    std::size_t blockSize = 0;
    String text; // owns the bytes of fromMemory()
    std::function<void(std::size_t)> observer;

    [[nodiscard]] bool refill();
    [[nodiscard]] bool advance(Piece& before);
    [[nodiscard]] bool fetch(Piece& before);
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

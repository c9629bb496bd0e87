#include "scene/core/File.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace vor {

namespace {

// Describes an errno, independent of the locale.
String errorText(int number) {
    const char* text = strerrordesc_np(number);
    return text ? String(text) : String::format("Unknown error %d", number);
}

int openForReading(const String& path) {
    // The system would end the path at a NUL and open another file.
    if (path.find('\0') >= 0) {
        errno = ENOENT;
        return -1;
    }
    int descriptor;
    do
        descriptor = ::open(path.buf(), O_RDONLY | O_CLOEXEC);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor >= 0)
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return descriptor;
}

class DescriptorSource final : public ByteSource {
public:
    DescriptorSource(int descriptor, bool isOwned) noexcept : descriptor_(descriptor), isOwned_(isOwned) {}

    // Required before the first read. `goesOn` is called when a signal has interrupted a read: true repeats it, false
    // ends the source.
    void onSignal(std::function<bool()> goesOn) { goesOn_ = std::move(goesOn); }

    // Call at most once, without a descriptor; on failure returns false with the reason in errno.
    [[nodiscard]] bool open(const String& path) {
        descriptor_ = openForReading(path);
        return descriptor_ >= 0;
    }
    DescriptorSource(const DescriptorSource&) = delete;
    DescriptorSource& operator=(const DescriptorSource&) = delete;
    ~DescriptorSource() override {
        if (isOwned_ && descriptor_ >= 0)
            ::close(descriptor_);
    }

    std::size_t read(char* buffer, std::size_t capacity, String& error) override {
        for (;;) {
            const ssize_t count = ::read(descriptor_, buffer, capacity);
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR) {
                error = errorText(errno);
                return 0;
            }
            if (!goesOn_())
                return 0;
        }
    }

private:
    int descriptor_;
    bool isOwned_;
    std::function<bool()> goesOn_;
};

} // namespace

// Makes bytes available: those that a borrower has left, else those that follow.
bool File::State::refill() {
    endLoan();
    Piece before;
    return next != end || advance(before);
}

void File::State::endLoan() noexcept {
    if (!borrower)
        return;
    next = end - borrower->returnLoan();
    borrower = nullptr;
}

// Makes the bytes after `end` available, in memory or from the source. `before` moves if they are to follow it.
bool File::State::advance(Piece& before) {
    if (later.empty())
        return fetch(before);
    next = later.back().bytes.data();
    end = next + later.back().bytes.size();
    owner = std::move(later.back().owner);
    later.pop_back();
    return true;
}

// Makes the next block available, unless the reading stops before it. At the end releases all memory.
bool File::State::fetch(Piece& before) {
    Piece fetched;
    if (!isOver() && !stops())
        fetched = source ? fetchFromSource(before) : fetchFromMemory();
    next = fetched.bytes.data();
    end = next + fetched.bytes.size();
    owner = std::move(fetched.owner);
    if (observer && !fetched.bytes.empty())
        observer(fetched.bytes.size());
    if (!fetched.bytes.empty() && !stops())
        return true;
    finish();
    return false;
}

// Reads more bytes of the source directly after `before`, which moves to a new block if this one has no space for them.
File::Piece File::State::fetchFromSource(Piece& before) {
    const std::string_view kept = before.bytes;
    const bool isHere = kept.empty() || kept.data() + kept.size() == block.bytes.get() + block.used;
    if (!isHere || block.size - block.used < std::max<std::size_t>(blockSize / 4, 1))
        startBlock(before, std::max(blockSize, kept.size()));
    char* const target = block.bytes.get() + block.used;
    const std::size_t count = source->read(target, std::min(blockSize, block.size - block.used), error);
    if (count == 0)
        return {};
    block.used += count;
    return {{target, count}, block.bytes};
}

// Takes some of the memory, so that no reader takes all of it without coming back here.
File::Piece File::State::fetchFromMemory() noexcept {
    Piece fetched{memory.bytes.substr(0, blockSize), memory.owner};
    memory.bytes.remove_prefix(fetched.bytes.size());
    return fetched;
}

// Whether the reading is to stop.
bool File::State::stops() {
    if (!isStopRequested.load(std::memory_order_relaxed))
        return false;
    error = "stopped on request";
    isStopped = true;
    return true;
}

std::function<bool()> File::State::signalHandler() {
    return [this] {
        if (observer)
            observer(0);
        return !stops();
    };
}

void File::State::finish() noexcept {
    endLoan(); // of an observer
    source.reset();
    memory = {};
    later.clear();
    block = spare = {};
    owner = nullptr;
    next = end = nullptr;
}

// Starts a block that no loan refers to with a copy of `first`, which moves there. There is space for more.
void File::State::startBlock(Piece& first, std::size_t space) {
    constexpr std::size_t leastSize = 64; // so that the blocks of tiny reads need little more memory than their bytes
    const std::string_view copied = first.bytes;
    const std::size_t size = std::max(leastSize, copied.size() + space);
    // So that this block can be used again for a `first` that is a little longer.
    const std::size_t slack = std::min<std::size_t>(size / 8, 4096);
    const auto isFree = [&](const Block& b) {
        return b.bytes.use_count() == (b.bytes == owner ? 2 : 1) && b.size >= size && b.size / 2 <= size;
    };
    Block started;
    if (copied.empty() && isFree(block))
        started = std::exchange(block, {});
    else if (isFree(spare))
        started = std::exchange(spare, {});
    else
        started = {std::make_shared_for_overwrite<char[]>(size + slack), size + slack};
    started.used = copied.size();
    std::ranges::copy(copied, started.bytes.get());
    if (!copied.empty())
        first = {{started.bytes.get(), copied.size()}, started.bytes};
    if (block.bytes)
        spare = std::move(block);
    block = std::move(started);
}

// Copies `before` and some of the bytes that follow to a new block, so that they are in one piece.
void File::State::join(Piece& before) {
    constexpr std::size_t enough = 4096;
    const Piece all{{next, end}, owner};
    const std::string_view some = all.bytes.substr(0, std::max(enough, before.bytes.size()));
    later.reserve(later.size() + 1);
    startBlock(before, some.size());
    if (some.size() < all.bytes.size())
        later.push_back({all.bytes.substr(some.size()), all.owner});
    owner = block.bytes;
    next = block.bytes.get() + block.used;
    end = std::ranges::copy(some, block.bytes.get() + block.used).out;
    block.used += some.size();
}

File::File() : state_(std::make_shared<State>()) {}

File File::open(const String& path) {
    // Allocate first, so that std::bad_alloc cannot leak an open descriptor.
    auto source = std::make_unique<DescriptorSource>(-1, true);
    DescriptorSource& opened = *source;
    File file = fromSource(std::move(source));
    opened.onSignal(file.state_->signalHandler());
    if (!opened.open(path)) {
        file.state_->error = errorText(errno);
        file.state_->isOpen = false;
        file.state_->source.reset();
    }
    return file;
}

File File::standardInput() {
    auto source = std::make_unique<DescriptorSource>(STDIN_FILENO, false);
    DescriptorSource& input = *source;
    File file = fromSource(std::move(source));
    input.onSignal(file.state_->signalHandler());
    return file;
}

File File::fromMemory(String text) {
    const auto keeper = std::make_shared<const String>(std::move(text));
    return fromMemory(keeper->view(), keeper);
}

File File::fromMemory(std::string_view bytes, std::shared_ptr<const void> keeper) {
    File file;
    file.state_->isOpen = true;
    file.state_->memory = {bytes, {std::move(keeper), bytes.data()}};
    return file;
}

File File::fromSource(std::unique_ptr<ByteSource> source, std::size_t blockSize) {
    File file;
    State& state = *file.state_;
    state.isOpen = true;
    state.source = std::move(source);
    state.blockSize = std::clamp<std::size_t>(blockSize, 1, maxBlockSize);
    return file;
}

std::string_view File::readBlock() {
    State& s = *state_;
    while (s.next == s.end)
        if (!s.refill())
            return {};
    return {std::exchange(s.next, s.end), s.end};
}

File::Piece File::borrow(Borrower& borrower, std::string_view before) {
    State& s = *state_;
    if (s.borrower == &borrower)
        s.borrower = nullptr; // this loan is used up
    s.endLoan();
    Piece front{before, nullptr};
    while (s.next == s.end) {
        if (!s.advance(front))
            return {before, nullptr};
        s.endLoan(); // an observer may have borrowed the bytes, or read them
    }
    if (!before.empty() && front.bytes.data() + front.bytes.size() != s.next)
        s.join(front);
    const char* const begin = before.empty() ? s.next : front.bytes.data();
    s.borrower = &borrower;
    s.next = s.end;
    return {{begin, s.end}, s.owner};
}

void File::endLoan(Borrower& borrower) noexcept {
    if (state_->borrower == &borrower)
        state_->endLoan();
}

bool File::isOpen() const noexcept { return state_->isOpen; }

void File::onFetch(std::function<void(std::size_t)> observer) { state_->observer = std::move(observer); }

String File::error() const { return state_->error; }

void File::requestStop() noexcept { state_->isStopRequested.store(true, std::memory_order_relaxed); }

bool File::isStopped() const noexcept { return state_->isStopped; }

} // namespace vor

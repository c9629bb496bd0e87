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
        ssize_t count;
        do
            count = ::read(descriptor_, buffer, capacity);
        while (count < 0 && errno == EINTR);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        error = errorText(errno);
        return 0;
    }

private:
    int descriptor_;
    bool isOwned_;
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

// Reads more bytes of the source directly after `before`, which moves to a new block if this one has no space for them.
bool File::State::fetch(Piece& before) {
    if (!source)
        return false;
    const std::string_view kept = before.bytes;
    const bool isHere = kept.empty() || kept.data() + kept.size() == block.bytes.get() + block.used;
    if (!isHere || block.size - block.used < std::max<std::size_t>(blockSize / 4, 1))
        startBlock(before, std::max(blockSize, kept.size()));
    char* const target = block.bytes.get() + block.used;
    const std::size_t count = source->read(target, std::min(blockSize, block.size - block.used), error);
    if (count == 0) {
        source.reset();
        block = spare = {};
        owner = nullptr;
        next = end = nullptr;
        return false;
    }
    block.used += count;
    owner = block.bytes;
    next = target;
    end = target + count;
    if (observer)
        observer(count);
    return true;
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
    if (!opened.open(path)) {
        file.state_->error = errorText(errno);
        file.state_->isOpen = false;
        file.state_->source.reset();
    }
    return file;
}

File File::standardInput() { return fromSource(std::make_unique<DescriptorSource>(STDIN_FILENO, false)); }

File File::fromMemory(String text) {
    File file;
    State& state = *file.state_;
    state.isOpen = true;
    state.text = std::move(text);
    state.next = state.text.buf();
    state.end = state.next + state.text.len();
    return file;
}

File File::fromSource(std::unique_ptr<ByteSource> source, std::size_t blockSize) {
    File file;
    State& state = *file.state_;
    state.isOpen = true;
    state.source = std::move(source);
    state.blockSize = blockSize == 0 ? 1 : blockSize;
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

} // namespace vor

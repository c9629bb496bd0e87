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

// Makes bytes available: those that a borrower has left, else those of the next block.
bool File::State::refill() {
    endLoan();
    std::string_view before;
    return next != end || fetch(before);
}

void File::State::endLoan() noexcept {
    if (!borrower)
        return;
    next = end - borrower->returnLoan();
    borrower = nullptr;
}

// Reads more bytes of the source directly after `before`, which moves to a new block if this one has no space for them.
bool File::State::fetch(std::string_view& before) {
    if (!source)
        return false;
    const auto space = [&] { return block.size - static_cast<std::size_t>(end - block.bytes.get()); };
    const bool isHere = before.empty() || before.data() + before.size() == end;
    if (!isHere || space() < std::max<std::size_t>(blockSize / 4, 1))
        before = startBlock(before, std::max(blockSize, before.size()));
    char* const target = block.bytes.get() + (end - block.bytes.get());
    const std::size_t count = source->read(target, std::min(blockSize, space()), error);
    next = target;
    end = target + count;
    if (count == 0)
        source.reset();
    else if (observer)
        observer(count);
    return count != 0;
}

// Starts a block that no loan refers to with a copy of `first`, which is returned. More fits after it.
std::string_view File::State::startBlock(std::string_view first, std::size_t space) {
    const std::size_t size = first.size() + space;
    const auto isFree = [&](const Block& b) {
        return b.bytes.use_count() == 1 && b.size >= size && b.size / 2 <= size;
    };
    if (!first.empty() || !isFree(block)) {
        std::swap(block, spare);
        if (!isFree(block)) {
            const std::size_t some = size + size / 8; // for a longer `first`
            block = {std::make_shared_for_overwrite<char[]>(some), some};
        }
    }
    next = end = std::ranges::copy(first, block.bytes.get()).out;
    return {block.bytes.get(), first.size()};
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

File::Loan File::borrow(Borrower& borrower, std::string_view before) {
    State& s = *state_;
    if (s.borrower == &borrower)
        s.borrower = nullptr; // this loan is used up
    s.endLoan();
    while (s.next == s.end) // an observer may have read the block
        if (!s.fetch(before))
            break;
    if (!before.empty() && before.data() + before.size() != s.next && s.next != s.end) {
        const std::string_view after(s.next, s.end);
        before = s.startBlock(before, after.size());
        s.end = std::ranges::copy(after, s.block.bytes.get() + before.size()).out;
    }
    s.borrower = &borrower;
    const char* const begin = before.empty() ? s.next : before.data();
    Loan loan{{begin, before.size() + static_cast<std::size_t>(s.end - s.next)}, s.block.bytes};
    s.next = s.end;
    return loan;
}

void File::endLoan(Borrower& borrower) noexcept {
    if (state_->borrower == &borrower)
        state_->endLoan();
}

bool File::isOpen() const noexcept { return state_->isOpen; }

void File::onFetch(std::function<void(std::size_t)> observer) { state_->observer = std::move(observer); }

String File::error() const { return state_->error; }

} // namespace vor

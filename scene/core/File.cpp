#include "scene/core/File.h"

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
    return next != end || fetch();
}

void File::State::endLoan() noexcept {
    if (!borrower)
        return;
    next = end - borrower->returnLoan();
    borrower = nullptr;
}

bool File::State::fetch() {
    if (!source)
        return false;
    if (!block)
        block = std::make_unique_for_overwrite<char[]>(blockSize);
    const std::size_t count = source->read(block.get(), blockSize, error);
    next = block.get();
    end = next + count;
    if (count == 0)
        source.reset();
    else if (observer)
        observer(count);
    return count != 0;
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

std::string_view File::borrow(Borrower& borrower) noexcept {
    State& s = *state_;
    s.endLoan();
    s.borrower = &borrower;
    return {std::exchange(s.next, s.end), s.end};
}

void File::endLoan(Borrower& borrower) noexcept {
    if (state_->borrower == &borrower)
        state_->endLoan();
}

bool File::isOpen() const noexcept { return state_->isOpen; }

void File::onFetch(std::function<void(std::size_t)> observer) { state_->observer = std::move(observer); }

String File::error() const { return state_->error; }

} // namespace vor

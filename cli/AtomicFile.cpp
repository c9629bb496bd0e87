#include "cli/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

namespace {

[[noreturn]] void fail(int error) { throw std::system_error(error, std::generic_category()); }

// A device or a pipe would be replaced by a file.
void refuseWhatIsNoFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        fail(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
}

} // namespace

AtomicFile::AtomicFile(std::string path)
    : path_(std::move(path)), temporary_(path_ + '.' + std::to_string(getpid()) + ".new") {
    refuseWhatIsNoFile(path_);
    descriptor_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0)
        fail(errno);
}

AtomicFile::~AtomicFile() {
    if (descriptor_ >= 0)
        close(descriptor_);
    if (!isCommitted_)
        unlink(temporary_.c_str());
}

void AtomicFile::write(std::string_view text) { writeAll(descriptor_, text); }

void AtomicFile::commit() {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (close(descriptor) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0)
        fail(errno);
    isCommitted_ = true;
}

void writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            fail(errno);
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace vrn::cli

#include "cli/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

namespace {

[[noreturn]] void fail(int error) { throw std::system_error(error, std::generic_category()); }

// Where a path leads to.
std::string followed(const std::string& path) {
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
}

} // namespace

AtomicFile::AtomicFile(const std::string& path)
    : path_(followed(path)), temporary_(path_ + '.' + std::to_string(getpid()) + ".new") {
    struct stat status {};
    const bool isThere = stat(path_.c_str(), &status) == 0;
    if (isThere && !S_ISREG(status.st_mode)) // a device or a pipe would be replaced by a file
        fail(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    descriptor_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0)
        fail(errno);
    if (isThere)
        (void)fchmod(descriptor_, status.st_mode & 07777);
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
    // What is in its place must be there also when the power fails.
    const bool isStored = fsync(descriptor) == 0;
    const int error = errno;
    if (close(descriptor) != 0 || !isStored)
        fail(isStored ? errno : error);
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0)
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

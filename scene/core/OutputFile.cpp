#include "scene/core/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vor {

// The folder with its trailing slash; empty for the current folder.
static std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

// Resolves symbolic links, dangling ones included.
static std::string resolveLinks(std::filesystem::path path) {
    namespace fs = std::filesystem;
    std::error_code error;
    constexpr int maxLinks = 40; // as the kernel does
    for (int links = 0; links < maxLinks && fs::is_symlink(path, error); ++links) {
        const fs::path target = fs::read_symlink(path, error);
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return path.string();
}

OutputFile::OutputFile(const std::string& path) : name_(path), path_(resolveLinks(path)) {
    if (path_.empty())
        fail(ENOENT);
    struct stat status {};
    const bool exists = stat(path_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        fail(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    if (exists && access(path_.c_str(), W_OK) != 0)
        fail(errno);
    open();
    // Keep owner and mode of the old file. Without permission to set the owner, keep the mode only if it is ours.
    if (exists && (fchown(descriptor_, status.st_uid, status.st_gid) == 0 || status.st_uid == geteuid()))
        (void)fchmod(descriptor_, status.st_mode & 07777);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0)
        close(descriptor_);
    if (!isCommitted_ && !temporary_.empty())
        unlink(temporary_.c_str());
}

void OutputFile::setTemporary(unsigned attempt) {
    temporary_ = folderOf(path_) + ".vrn-" + std::to_string(getpid()) + '-' + std::to_string(attempt) + ".new";
}

// Prefers a file without a name, if the file system supports it and /proc is available to name it later.
void OutputFile::open() {
#ifdef O_TMPFILE
    const std::string folder = folderOf(path_);
    if (access("/proc/self/fd", X_OK) == 0)
        descriptor_ = ::open(folder.empty() ? "." : folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
#endif
    for (unsigned attempt = 0; descriptor_ < 0; ++attempt) {
        setTemporary(attempt);
        descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno != EEXIST)
            fail(errno);
    }
}

// linkat() does not replace an existing file, so link under a temporary name first and rename that.
void OutputFile::linkTemporary() {
    const std::string unnamed = "/proc/self/fd/" + std::to_string(descriptor_);
    for (unsigned attempt = 0;; ++attempt) {
        setTemporary(attempt);
        if (linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, temporary_.c_str(), AT_SYMLINK_FOLLOW) == 0)
            return;
        if (errno == EEXIST)
            continue;
        temporary_.clear();
        fail(errno);
    }
}

void OutputFile::write(std::string_view bytes) {
    if (const int error = writeAll(descriptor_, bytes))
        fail(error);
}

void OutputFile::commit() {
    if (fsync(descriptor_) != 0 && errno != EINVAL)
        fail(errno);
    if (temporary_.empty())
        linkTemporary();
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (close(descriptor) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0)
        fail(errno);
    isCommitted_ = true;
}

int writeAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace vor

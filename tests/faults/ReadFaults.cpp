// Preloaded, replaces the C library's read() and injects faults for scene files:
//
//   VRN_READ_FAULT=eio:N    fails with EIO after N bytes
//   VRN_READ_FAULT=eof:N    reports the end once after N bytes, then continues
//   VRN_READ_FAULT=eintr    fails with EINTR every other time
//   VRN_READ_FAULT=short    returns a few bytes at a time
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Regular files and pipes that a scene may come from, not the files read at process start.
bool isScene(int descriptor) {
    struct stat status {};
    const bool isFile = fstat(descriptor, &status) == 0 && (S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode));
    const char* size = std::getenv("VRN_READ_FAULT_SIZE"); // identifies the file
    return isFile && (!size || S_ISFIFO(status.st_mode) || status.st_size == std::atol(size));
}

long limitOf(std::string_view fault) { return std::atol(fault.substr(fault.find(':') + 1).data()); }

} // namespace

extern "C" ssize_t read(int descriptor, void* buffer, size_t size) {
    static long calls = 0;
    static long done = 0;
    static bool hasEnded = false;
    const char* name = std::getenv("VRN_READ_FAULT");
    const std::string_view fault = name ? name : "";
    if (fault.empty() || !isScene(descriptor))
        return syscall(SYS_read, descriptor, buffer, size);
    ++calls;
    if (fault == "eintr" && calls % 2 == 1) {
        errno = EINTR;
        return -1;
    }
    if (fault == "short")
        size = std::min<size_t>(size, 1 + static_cast<size_t>(calls % 7));
    if (fault.starts_with("eio:")) {
        if (done >= limitOf(fault)) {
            errno = EIO;
            return -1;
        }
        size = std::min<size_t>(size, static_cast<size_t>(limitOf(fault) - done));
    }
    if (fault.starts_with("eof:") && !hasEnded) {
        hasEnded = done == limitOf(fault);
        size = std::min<size_t>(size, static_cast<size_t>(limitOf(fault) - done));
        if (hasEnded)
            return 0;
    }
    const ssize_t count = syscall(SYS_read, descriptor, buffer, size);
    done += std::max<ssize_t>(count, 0);
    return count;
}

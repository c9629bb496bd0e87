// Stands before the C library's read() when it is preloaded, and has it go wrong for the files of a scene:
//
//   VRN_READ_FAULT=eio:N    fails with EIO once N bytes have been read
//   VRN_READ_FAULT=eof:N    says once that N bytes are all, and has more when it is asked again
//   VRN_READ_FAULT=eintr    is interrupted every other time
//   VRN_READ_FAULT=short    gives a few bytes at a time
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Only regular files, pipes and the like that a scene may come from: not what the start of a process reads.
bool isScene(int descriptor) {
    struct stat what {};
    const bool isFile = fstat(descriptor, &what) == 0 && (S_ISREG(what.st_mode) || S_ISFIFO(what.st_mode));
    const char* suffix = std::getenv("VRN_READ_FAULT_SIZE"); // of the file that is meant
    return isFile && (!suffix || S_ISFIFO(what.st_mode) || what.st_size == std::atol(suffix));
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

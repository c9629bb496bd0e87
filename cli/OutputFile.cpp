#include "cli/OutputFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vrn::cli {

using vor::String;

namespace {

// The mode of the file that is replaced, or that of a new one.
mode_t modeFor(const std::string& path) noexcept {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0)
        return status.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

OutputFile::OutputFile(const String& path) {
    std::error_code error;
    const auto target = std::filesystem::weakly_canonical(path.buf(), error);
    target_ = error ? path.buf() : target.string();
    temporary_ = target_ + ".XXXXXX";
    const int descriptor = mkstemp(temporary_.data());
    file_ = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
    if (!file_ || fchmod(descriptor, modeFor(target_)) != 0)
        fail();
}

OutputFile::~OutputFile() {
    if (!file_)
        return;
    std::fclose(file_);
    unlink(temporary_.c_str());
}

void OutputFile::fail() noexcept {
    if (errno_ == 0)
        errno_ = errno;
}

void OutputFile::write(std::string_view text) {
    if (errno_ == 0 && std::fwrite(text.data(), 1, text.size(), file_) != text.size())
        fail();
}

String OutputFile::commit() {
    if (errno_ == 0 && (std::fflush(file_) != 0 || fsync(fileno(file_)) != 0))
        fail();
    if (errno_ == 0 && std::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail();
    if (errno_ != 0)
        return strerrordesc_np(errno_);
    std::fclose(file_);
    file_ = nullptr;
    return String();
}

String replaceFile(const String& path, std::string_view text) {
    OutputFile file(path);
    file.write(text);
    return file.commit();
}

} // namespace vrn::cli

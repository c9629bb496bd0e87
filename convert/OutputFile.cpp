#include "convert/OutputFile.h"

#include "scene/core/String.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vrn::convert {

using vor::String;
namespace fs = std::filesystem;

OutputFile::OutputFile(const std::string& path) : name_(path), place_(path) {
    std::error_code error;
    if (const fs::path target = fs::canonical(place_, error); !error)
        place_ = target;
    const fs::file_status status = fs::status(place_, error);
    if (fs::is_directory(status))
        fail(EISDIR);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw FileError(name_, "it is no file of a disk; name one");
    for (unsigned attempt = 0; descriptor_ < 0; ++attempt) {
        temporary_ = place_;
        temporary_ += String::format(".%ld-%u.new", static_cast<long>(getpid()), attempt).buf();
        descriptor_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno != EEXIST)
            fail(errno);
    }
    if (fs::exists(status))
        (void)fchmod(descriptor_, static_cast<mode_t>(status.permissions())); // or it has those of a new file
}

OutputFile::~OutputFile() {
    if (descriptor_ < 0)
        return;
    close(descriptor_);
    unlink(temporary_.c_str());
}

void OutputFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            fail(errno);
    }
}

void OutputFile::commit() {
    if (fsync(descriptor_) != 0 && errno != EINVAL)
        fail(errno);
    if (rename(temporary_.c_str(), place_.c_str()) != 0)
        fail(errno);
    close(descriptor_);
    descriptor_ = -1;
}

void OutputFile::fail(int error) const { throw FileError(name_, strerrordesc_np(error)); }

} // namespace vrn::convert

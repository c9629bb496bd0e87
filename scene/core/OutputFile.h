// Writes a file atomically: it appears complete or not at all.
//
//     OutputFile file("scene.glb");
//     file.write(bytes);
//     file.commit();                // without it, `scene.glb` is unchanged and no temporary file remains
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <system_error>

namespace vor {

// A failed system call, with the path that the caller passed.
class OutputFileError : public std::system_error {
public:
    OutputFileError(int error, std::string path)
        : std::system_error(error, std::generic_category()), path_(std::move(path)) {}
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

// Writes to a temporary file in the folder of the target. If it is not committed, the destructor removes it; on file
// systems with O_TMPFILE, nothing remains even if the process is killed. Follows symbolic links and keeps the mode of a
// file that it replaces. Only regular files can be replaced, not devices or folders. All functions throw
// OutputFileError.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }
    void write(std::string_view bytes);
    void write(std::span<const std::byte> bytes) {
        write(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    // Flushes the file to disk (fsync) and renames it to the target. Call at most once.
    void commit();

private:
    [[noreturn]] void fail(int error) const { throw OutputFileError(error, name_); }
    void open();
    void setTemporary(unsigned attempt);
    void linkTemporary();

    std::string name_;      // the path as passed by the caller
    std::string path_;      // with links resolved
    std::string temporary_; // empty while the file has no name
    int descriptor_ = -1;
    bool isCommitted_ = false;
};

// Writes all of `text` to an open file; returns 0 or the errno of the failure.
[[nodiscard]] int writeAll(int descriptor, std::string_view text) noexcept;

} // namespace vor

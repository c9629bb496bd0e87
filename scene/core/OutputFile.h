// A file that appears as a whole or not at all.
//
//     OutputFile file("scene.glb");
//     file.write(bytes);
//     file.commit();                // without it nothing is left behind
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <system_error>

namespace vor {

// What the system refused, and about which file.
class OutputFileError : public std::system_error {
public:
    OutputFileError(int error, std::string path)
        : std::system_error(error, std::generic_category()), path_(std::move(path)) {}
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

// Written beside the file that it is going to replace. Unless it is committed nothing is left of it, on file systems
// that have files without a name not even where the process is killed. A link is followed, a file that is replaced
// leaves its mode; what is no file of a disk, such as a device, is refused. Functions throw OutputFileError.
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

    // Puts it in its place, also for the case that the power fails.
    void commit();

private:
    [[noreturn]] void fail(int error) const { throw OutputFileError(error, name_); }
    void open();
    void setTemporary(unsigned attempt);
    void giveName();

    std::string name_; // as the caller calls it
    std::string path_;
    std::string temporary_; // empty as long as it has no name
    int descriptor_ = -1;
    bool isCommitted_ = false;
};

// Writes all of a text to an open file; returns the errno of what went wrong, or 0.
[[nodiscard]] int writeAll(int descriptor, std::string_view text) noexcept;

} // namespace vor

// The exceptions of conversions.
#pragma once

#include <stdexcept>
#include <string>

namespace vrn::convert {

// A file cannot be opened, read or written; what() is the reason.
class FileError : public std::runtime_error {
public:
    FileError(std::string path, const std::string& reason) : std::runtime_error(reason), path_(std::move(path)) {}
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

// The content of a file is invalid, does not match its extension, or is empty in terms of the output format.
class ContentError : public FileError {
public:
    using FileError::FileError;
};

} // namespace vrn::convert

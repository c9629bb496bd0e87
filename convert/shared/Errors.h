// Why a conversion is given up.
#pragma once

#include <stdexcept>
#include <string>

namespace vrn::convert {

// A file that cannot be opened, read or written; what() says why.
class FileError : public std::runtime_error {
public:
    FileError(std::string path, const std::string& reason) : std::runtime_error(reason), path_(std::move(path)) {}
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

// What a file holds is broken, not what its extension says, or nothing that the other format could take.
class ContentError : public FileError {
public:
    using FileError::FileError;
};

} // namespace vrn::convert

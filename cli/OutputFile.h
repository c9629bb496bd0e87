// Files that are written as a whole or not at all.
#pragma once

#include "scene/core/String.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace vrn::cli {

// Writes beside the file, and puts what was written in its place when all of it is there. A link is followed; a file
// that is there keeps its mode.
class OutputFile {
public:
    explicit OutputFile(const vor::String& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view text);

    // Puts it in its place, unless something has failed; returns why, in the words of errno, or nothing.
    [[nodiscard]] vor::String commit();

private:
    void fail() noexcept;

    std::string target_;
    std::string temporary_;
    std::FILE* file_ = nullptr;
    int errno_ = 0; // of what failed first
};

// The same in one go.
[[nodiscard]] vor::String replaceFile(const vor::String& path, std::string_view text);

} // namespace vrn::cli

// ByteSink: collects bytes for a file, so that small pieces cost no system call each, and has the disk write them while
// the next ones are computed.
#pragma once

#include "scene/core/OutputFile.h"

#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <vector>

namespace vrn::convert {

class ByteSink {
public:
    explicit ByteSink(vor::OutputFile& file) : file_(file) {}

    // Space for up to `capacity` bytes; call advance() with the number that was written there.
    [[nodiscard]] char* reserve(std::size_t capacity) {
        if (buffer_.size() - used_ < capacity) {
            flush();
            buffer_.resize(std::max(buffer_.size(), capacity));
        }
        return buffer_.data() + used_;
    }
    void advance(std::size_t bytes) noexcept { used_ += bytes; }

    void add(std::string_view bytes) {
        std::memcpy(reserve(bytes.size()), bytes.data(), bytes.size());
        advance(bytes.size());
    }

    // Call after the last piece.
    void flush() {
        file_.write(std::string_view(buffer_.data(), used_));
        written_ += used_;
        used_ = 0;
        if (written_ - started_ >= partSize)
            startWriting();
    }

private:
    static constexpr std::size_t partSize = std::size_t(1) << 23;

    // Otherwise the disk would do nothing before OutputFile::commit(), which waits for it. A failure means no more than
    // that.
    void startWriting() noexcept {
#ifdef SYNC_FILE_RANGE_WRITE
        (void)sync_file_range(file_.descriptor(), static_cast<off_t>(started_), static_cast<off_t>(written_ - started_),
                              SYNC_FILE_RANGE_WRITE);
#endif
        started_ = written_;
    }

    vor::OutputFile& file_;
    std::vector<char> buffer_ = std::vector<char>(std::size_t(1) << 18);
    std::size_t used_ = 0;
    std::size_t written_ = 0; // bytes of the file
    std::size_t started_ = 0; // those that the disk writes
};

} // namespace vrn::convert

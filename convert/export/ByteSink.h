// ByteSink: collects bytes for a file, so that small pieces cost no system call each.
#pragma once

#include "scene/core/OutputFile.h"

#include <cstring>
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
        used_ = 0;
    }

private:
    vor::OutputFile& file_;
    std::vector<char> buffer_ = std::vector<char>(std::size_t(1) << 18);
    std::size_t used_ = 0;
};

} // namespace vrn::convert

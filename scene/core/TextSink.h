// Where long texts go, piece by piece.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

namespace vor {

using TextSink = std::function<void(std::string_view)>;

// Gathers a text and hands it on in blocks of up to 64 KiB, or what is longer as a whole; the rest of it when flush()
// is called.
class TextBlock {
public:
    // The sink stays the caller's and has to live as long.
    explicit TextBlock(const TextSink& sink)
        : sink_(sink), block_(std::make_unique_for_overwrite<char[]>(size + slack)) {}

    void append(std::string_view text) {
        if (text.size() > size - used_)
            return appendLong(text);
        std::copy(text.begin(), text.end(), block_.get() + used_);
        used_ += text.size();
    }
    // The same for a short text behind which `slack` more characters may be read, of whatever kind.
    static constexpr std::size_t slack = 32;
    void appendLoose(std::string_view text) {
        if (text.size() > size - used_)
            return appendLong(text);
        char* const to = block_.get() + used_;
        for (std::size_t i = 0; i < text.size(); i += slack) // pieces of a size that is known need no call
            std::memcpy(to + i, text.data() + i, slack);
        used_ += text.size();
    }
    void append(char c) { append({&c, 1}); }
    void append(std::size_t count, char c) {
        while (count-- != 0)
            append(c);
    }
    void flush() {
        if (used_ != 0)
            sink_({block_.get(), used_});
        used_ = 0;
    }

private:
    static constexpr std::size_t size = 64 * 1024;

    void appendLong(std::string_view text) {
        flush();
        if (text.size() > size)
            sink_(text);
        else
            append(text);
    }

    const TextSink& sink_;
    std::unique_ptr<char[]> block_;
    std::size_t used_ = 0;
};

} // namespace vor

// Output of long texts in pieces.
//
//     std::string text;
//     const TextSink sink = [&](std::string_view piece) { text += piece; };
//     TextBlock block(sink);
//     block.append("a");
//     block.flush();             // call at the end: the destructor does not
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

namespace vor {

using TextSink = std::function<void(std::string_view)>;

// Buffers a text and passes it to a sink in blocks of up to 64 KiB; longer pieces are passed through. Exceptions of the
// sink propagate. Not thread-safe.
class TextBlock {
public:
    // The sink must outlive the block.
    explicit TextBlock(const TextSink& sink)
        : sink_(sink), block_(std::make_unique_for_overwrite<char[]>(size + slack)) {}

    void append(std::string_view text) {
        if (text.size() > size - used_)
            return appendLong(text);
        std::copy(text.begin(), text.end(), block_.get() + used_);
        used_ += text.size();
    }
    // The same for a short text that is followed by at least `slack` readable characters, of any value.
    static constexpr std::size_t slack = 32;
    void appendLoose(std::string_view text) {
        if (text.size() > size - used_)
            return appendLong(text);
        char* const to = block_.get() + used_;
        for (std::size_t i = 0; i < text.size(); i += slack) // copies of a constant size are inlined
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

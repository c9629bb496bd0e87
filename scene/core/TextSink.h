// Where long texts go, piece by piece.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vor {

using TextSink = std::function<void(std::string_view)>;

// Gathers a text and hands it on in blocks of some 64 KiB; the rest of it when flush() is called.
class TextBlock {
public:
    // The sink stays the caller's and has to live as long.
    explicit TextBlock(const TextSink& sink) : sink_(sink) { text_.reserve(2 * size); }

    void append(char c) {
        text_ += c;
        if (text_.size() >= size)
            flush();
    }
    void append(std::string_view text) {
        text_ += text;
        if (text_.size() >= size)
            flush();
    }
    void append(std::size_t count, char c) {
        text_.append(count, c);
        if (text_.size() >= size)
            flush();
    }
    void flush() {
        if (!text_.empty())
            sink_(text_);
        text_.clear();
    }

private:
    static constexpr std::size_t size = 64 * 1024;
    const TextSink& sink_;
    std::string text_;
};

} // namespace vor

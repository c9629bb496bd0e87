// A file that appears whole or not at all.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace vrn::cli {

// Written beside the file that it is going to replace; taken away again unless it is committed. A link is followed, a
// file that is replaced leaves its mode. Functions throw std::system_error when the system refuses.
class AtomicFile {
public:
    explicit AtomicFile(const std::string& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }
    void write(std::string_view text);
    void commit();

private:
    std::string path_;
    std::string temporary_;
    int descriptor_;
    bool isCommitted_ = false;
};

// Writes all of a text to an open file.
void writeAll(int descriptor, std::string_view text);

} // namespace vrn::cli

// A folder for temporary files, which is removed with everything in it.
#pragma once

#include <string>

namespace vrn::cli {

class ScratchFolder {
public:
    ScratchFolder(); // throws std::system_error
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const { return path_ + '/' + name; }

private:
    std::string path_;
};

} // namespace vrn::cli

#include "cli/files/ScratchFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace vrn::cli {

ScratchFolder::ScratchFolder() : path_(std::filesystem::temp_directory_path() / "vrn-XXXXXX") {
    if (!mkdtemp(path_.data()))
        throw std::system_error(errno, std::generic_category(), path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
}

} // namespace vrn::cli

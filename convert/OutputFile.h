// A file that appears as a whole or not at all: it is written beside its place under another name, and takes the
// place once it is complete.
//
//     OutputFile file("scene.glb");
//     file.write(bytes);
//     file.commit();                // without it nothing is left behind
//
// Whatever goes wrong is thrown as a FileError. An older file of that name keeps its permissions; a link leads to the
// file that it names; what is no file of the disk, such as a device, is refused.
#pragma once

#include "convert/Errors.h"

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace vrn::convert {

class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    void write(std::span<const std::byte> bytes) {
        write(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    void commit();

private:
    [[noreturn]] void fail(int error) const;

    std::string name_; // as the caller calls it
    std::filesystem::path place_;
    std::filesystem::path temporary_;
    int descriptor_ = -1;
};

} // namespace vrn::convert

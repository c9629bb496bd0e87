#include "cli/files/TextFile.h"

#include <string>
#include <utility>

namespace vrn::cli {

using namespace vor;

TextFile::TextFile(String argument) : argument_(std::move(argument)) {
    const File file = isStandardInput() ? File::standardInput() : File::open(argument_);
    text_ = readAll(file);
    error_ = file.error();
}

String readAll(File file) {
    std::string text;
    for (std::string_view block = file.readBlock(); !block.empty(); block = file.readBlock())
        text += block;
    return std::string_view(text);
}

} // namespace vrn::cli

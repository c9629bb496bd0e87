#include "cli/files/TextFile.h"

#include "inspect/text/WholeText.h"

#include <utility>

namespace vrn::cli {

using namespace vor;

TextFile::TextFile(String argument) : argument_(std::move(argument)) {
    const File file = isStandardInput() ? File::standardInput() : File::open(argument_);
    text_ = inspect::readAll(file);
    error_ = file.error();
}

} // namespace vrn::cli

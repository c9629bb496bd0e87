// A file, read into memory.
#pragma once

#include "scene/core/File.h"

namespace vrn::cli {

class TextFile {
public:
    // Reads the file; `-` is standard input.
    explicit TextFile(vor::String argument);

    [[nodiscard]] bool isStandardInput() const noexcept { return argument_ == "-"; }
    [[nodiscard]] const vor::String& argument() const noexcept { return argument_; }
    [[nodiscard]] vor::String displayName() const { return isStandardInput() ? "<stdin>" : argument_; }

    // Why the file could not be read; empty if it could.
    [[nodiscard]] const vor::String& error() const noexcept { return error_; }
    [[nodiscard]] const vor::String& text() const noexcept { return text_; }

private:
    vor::String argument_;
    vor::String text_;
    vor::String error_;
};

} // namespace vrn::cli

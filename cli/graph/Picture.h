// Renders graphs with the program `dot` of Graphviz.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace vrn::cli {

// `dot` is missing or failed.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Renders DOT text as `svg`, `png` or `pdf` into an open file. Throws PictureError, or std::system_error if a system
// call fails.
void drawPicture(std::string_view dotText, const std::string& format, int descriptor);

} // namespace vrn::cli

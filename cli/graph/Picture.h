// Pictures of graphs, by Graphviz's program `dot`.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace vrn::cli {

// That there is no picture, and why.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Has `dot` draw a text of its language as `svg`, `png` or `pdf` into an open file. Throws PictureError, or
// std::system_error when the system refuses.
void drawPicture(std::string_view dotText, const std::string& format, int descriptor);

} // namespace vrn::cli

// How the readers of models report progress.
#pragma once

#include <functional>

namespace vrn::convert {

// Called with the part of a file that has been read, from 0 to 1; how often depends on the format.
using ReadListener = std::function<void(double part)>;

} // namespace vrn::convert

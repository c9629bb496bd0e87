// Progress of reading a model.
#pragma once

#include <functional>

namespace vrn::convert {

// Called with the fraction of the file read so far, from 0 to 1. Some formats never report.
using ReadListener = std::function<void(double fraction)>;

} // namespace vrn::convert

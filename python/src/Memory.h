// Bytes of Python objects as text of the library, without a copy.
#pragma once

#include "python/src/Python.h"

#include <memory>
#include <string_view>

namespace vrn::python {

struct Memory {
    std::string_view bytes;
    std::shared_ptr<const void> keeper; // may be released on any thread, with or without the GIL
};

// The UTF-8 of a str (copied only if it has lone surrogates), or the memory of bytes, bytearray, memoryview, mmap or an
// array of bytes. Raises TypeError for other objects.
[[nodiscard]] Memory memoryOf(nb::handle data);

} // namespace vrn::python

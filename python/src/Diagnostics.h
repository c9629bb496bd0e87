// Diagnoses of the library as Python objects.
#pragma once

#include "inspect/read/Diagnosis.h"
#include "python/src/Python.h"

namespace vrn::python {

// Instances of vrn.Diagnostic, in the order of the text.
[[nodiscard]] nb::tuple diagnosticsOf(const inspect::Diagnosis& diagnosis);

// Raises the ParseError of a text that ends with an error.
[[noreturn]] void raiseParseError(const inspect::Diagnosis& diagnosis, nb::handle scene, const char* type);

} // namespace vrn::python

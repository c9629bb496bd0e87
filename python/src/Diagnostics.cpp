#include "python/src/Diagnostics.h"

#include "inspect/read/Kind.h"

namespace vrn::python {

using inspect::Diagnosis;
using inspect::Diagnostic;

namespace {

const char* severityOf(vor::LogSeverity severity) {
    switch (severity) {
    case vor::LogSeverity::Error:
        return "error";
    case vor::LogSeverity::Warning:
        return "warning";
    case vor::LogSeverity::Notice:
        break;
    }
    return "notice";
}

nb::object diagnosticOf(const Diagnostic& diagnostic) {
    const char* kind = inspect::kindOf(diagnostic.record);
    const vor::TextPosition position = diagnostic.position();
    return imported("vrn._errors", "Diagnostic")(position.line, position.column, severityOf(diagnostic.record.severity),
                                                 kind ? kind : "", str(diagnostic.record.text));
}

// The error that ended the text: the last one, because nothing is read after it.
const Diagnostic* endingError(const Diagnosis& diagnosis) {
    const Diagnostic* error = nullptr;
    for (const Diagnostic& diagnostic : diagnosis.diagnostics)
        if (diagnostic.record.severity == vor::LogSeverity::Error || !error)
            error = &diagnostic;
    return error;
}

} // namespace

nb::tuple diagnosticsOf(const Diagnosis& diagnosis) {
    nb::list made;
    for (const Diagnostic& diagnostic : diagnosis.diagnostics)
        made.append(diagnosticOf(diagnostic));
    return nb::tuple(made);
}

void raiseParseError(const Diagnosis& diagnosis, nb::handle scene, const char* type) {
    const Diagnostic* error = endingError(diagnosis);
    std::string text = error ? inspect::diagnosticText(diagnosis, *error) : "the text is not valid";
    while (text.ends_with('\n'))
        text.pop_back();
    const vor::TextPosition position = error ? error->position() : vor::TextPosition();
    const nb::handle made = imported("vrn._errors", type);
    const nb::object exception =
        made(str(text), str(diagnosis.displayName()), position.line, position.column, diagnosticsOf(diagnosis), scene);
    PyErr_SetObject(made.ptr(), exception.ptr());
    throw nb::python_error();
}

} // namespace vrn::python

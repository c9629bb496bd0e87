#include "inspect/read/Diagnosis.h"

#include "inspect/read/Kind.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>

namespace vrn::inspect {

using namespace vor;

std::size_t Diagnosis::count(LogSeverity severity) const noexcept {
    return static_cast<std::size_t>(std::ranges::count(
        diagnostics, severity, [](const Diagnostic& diagnostic) { return diagnostic.record.severity; }));
}

std::size_t Diagnosis::warnings() const noexcept { return count(LogSeverity::Warning) + count(LogSeverity::Notice); }

std::string diagnosticText(const Diagnosis& diagnosis, const Diagnostic& diagnostic) {
    const LogRecord& record = diagnostic.record;
    const char* severity = record.severity == LogSeverity::Error ? "error" : "warning";
    std::string text(escapeForTerminal(diagnosis.displayName()).view());
    text += String::format(":%d:%d: %s: ", record.position.line, record.position.column, severity).view();
    text += escapeForTerminal(record.text).view();
    text += markOf(record) + '\n';
    return text + diagnostic.line.withCaret();
}

std::string diagnosticsText(const Diagnosis& diagnosis) {
    std::string text;
    for (const Diagnostic& diagnostic : diagnosis.diagnostics)
        text += diagnosticText(diagnosis, diagnostic);
    return text;
}

} // namespace vrn::inspect

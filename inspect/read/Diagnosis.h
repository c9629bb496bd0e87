// Diagnosis: what was found wrong with one text. A plain value, which reports are made of.
//
//     for (const Diagnostic& diagnostic : diagnosis.diagnostics)
//         show(diagnostic.position(), diagnostic.record.text, kindOf(diagnostic.record), diagnostic.line.withCaret());
//
// Owns what it contains. SceneFile (SceneFile.h) makes them; so can anything else.
#pragma once

#include "inspect/text/Excerpt.h"
#include "scene/core/Log.h"
#include "scene/core/String.h"

#include <string>
#include <vector>

namespace vrn::inspect {

struct Diagnostic {
    vor::LogRecord record; // its column counts bytes
    Excerpt line{};        // of the text; does not exist where it was not requested

    // The position with a column that counts characters; line 0 if unknown.
    [[nodiscard]] vor::TextPosition position() const noexcept {
        return line.exists ? vor::TextPosition{record.position.line, static_cast<vor::i32>(line.column)}
                           : vor::TextPosition();
    }
};

struct Diagnosis {
    vor::String name;        // of the file, as the user gave it; `-` is standard input
    vor::String readError{}; // why the file could not be read completely; empty if it could
    bool isAccepted = false; // the result of the reader
    std::vector<Diagnostic> diagnostics{};

    [[nodiscard]] bool isWhole() const noexcept { return readError.isEmpty(); }
    [[nodiscard]] bool isOk() const noexcept { return isAccepted && isWhole(); }
    [[nodiscard]] bool hasErrors() const noexcept { return !isOk() || count(vor::LogSeverity::Error) != 0; }

    // Linear in the diagnostics.
    [[nodiscard]] std::size_t count(vor::LogSeverity severity) const noexcept;
    [[nodiscard]] std::size_t warnings() const noexcept; // notices count as warnings

    [[nodiscard]] vor::String displayName() const { return name == "-" ? "<stdin>" : name; }
};

// A diagnostic as text, `scene.vrn:3:7: error: ...`, with its line of the text and a caret under the column if they are
// known; and all of them. Escaped for terminals.
[[nodiscard]] std::string diagnosticText(const Diagnosis& diagnosis, const Diagnostic& diagnostic);
[[nodiscard]] std::string diagnosticsText(const Diagnosis& diagnosis);

} // namespace vrn::inspect

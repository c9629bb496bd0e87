// formatVrn: lays out VRN text. Changes blanks between tokens, and separators in lists, but no tokens.
//
//     std::string formatted;
//     try {
//         formatVrn(text, {}, [&](std::string_view piece) { formatted += piece; });
//     } catch (const FormatError& error) {
//         std::cerr << error.position().line << ": " << error.what() << '\n';
//     }
//
// Each statement gets its own line; statements about the current node are indented. Lists that do not fit are wrapped
// between elements. Comments keep their place, and trailing comments are aligned. Consecutive blank lines are reduced
// to one. Values keep their spelling.
//
// Reading the result produces the same scene and, apart from positions, the same log. Formatting it again changes
// nothing. Statements need not be valid, but a text with lexical errors is refused, and so is one with bytes that the
// reader skips silently.
//
// The text is borrowed for the duration of the call. Calls share no state and may run in parallel.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/Log.h"
#include "scene/core/TextSink.h"

#include <stdexcept>

namespace vor::velmo_sdk::impl {

// Why a text cannot be formatted, and where.
class VRN_API FormatError : public std::runtime_error {
public:
    FormatError(const String& message, TextPosition position)
        : std::runtime_error(message.buf()), position_(position) {}
    [[nodiscard]] TextPosition position() const noexcept { return position_; }

private:
    TextPosition position_;
};

struct FormatOptions {
    u32 column = 100; // maximum line width for wrapping lists; 0: lists are not wrapped
};

// Passes the formatted text to `sink` in pieces of about 64 KiB. Throws FormatError, std::bad_alloc and the exceptions
// of `sink`, possibly after part of the result has been passed on. Linear in the text; needs memory for its longest
// statement and for its longest run of comments.
VRN_API void formatVrn(const String& text, const FormatOptions& options, const TextSink& sink);

} // namespace vor::velmo_sdk::impl

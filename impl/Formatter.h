// VRN text laid out anew: the same tokens, other blanks.
//
//     std::string formatted;
//     try {
//         formatVrn(text, {}, [&](std::string_view piece) { formatted += piece; });
//     } catch (const FormatError& error) {
//         std::cerr << error.position().line << ": " << error.what() << '\n';
//     }
//
// Each statement stands on a line of its own, those of the current node indented; lists that do not fit go on in lines
// of whole elements. Comments stay where they are, those behind statements one below the other; of blank lines one
// stays. The spelling of every value stays. What is read from the result is the same, scene and log, but for the places
// that the log speaks of; formatted again it is the same text. Statements need not make sense, but a text whose tokens
// cannot be told is refused.
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
    u32 column = 100; // that no list should go beyond; 0: none is wrapped
};

// Hands the formatted text to `sink` in pieces of some 64 KiB. Throws FormatError, when some of it may have been handed
// on already, std::bad_alloc, and what `sink` throws. Linear in the text; takes memory for its longest statement, and
// for comments that follow each other.
VRN_API void formatVrn(const String& text, const FormatOptions& options, const TextSink& sink);

} // namespace vor::velmo_sdk::impl

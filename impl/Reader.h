// parseVrn, parseString: read VRN text into a scene.
//
//     Scene scene;
//     File file = File::open("scene.vrn");
//     try {
//         if (!parseVrn(&scene, file, false))
//             ...                            // the log has the error; the scene contains what precedes it
//     } catch (const ReadError& error) {     // an error among the first three tokens of the text
//         ...
//     }
//     if (!file.error().isEmpty())           // the file could not be opened or read to its end;
//         ...                                // the reader treats that as the end of the text
//
// Statements are applied to the scene one by one. The first syntax error ends the parse, is logged as an error and
// makes the result false; the statements before it stay applied. An error among the first three tokens is thrown as a
// ReadError instead. Values that do not fit their input, and links to missing nodes or outputs, are only logged. Every
// diagnostic goes to the log (scene/core/Log.h) with its position in the text.
//
// A read that is stopped (File::requestStop) ends the parse as a syntax error does, but its error is always logged, and
// has the name `stopped`.
//
// The caller owns the scene. A parse runs on the caller's thread; parses into different scenes may run in parallel.
// Time is linear in the text. Memory: the scene, a record for each link, twice the text of the longest token that is
// not the list of a buffer, and half that of the longest compressed payload. std::bad_alloc passes through and leaves
// the scene valid. examples/read_scene.cpp is a complete program.
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/Export.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <stdexcept>

namespace vor::velmo_sdk::impl {

class SourceMap;

// An error in a text. what() is the formatted message, format() its printf format, as in LogRecord.
class VRN_API ReadError : public std::runtime_error {
public:
    ReadError(const String& message, TextPosition position, const char* format = nullptr)
        : std::runtime_error(message.buf()), position_(position), format_(format) {}
    [[nodiscard]] TextPosition position() const noexcept { return position_; }
    [[nodiscard]] const char* format() const noexcept { return format_; }

private:
    TextPosition position_;
    const char* format_;
};

// The name of the message with a format of LogRecord or ReadError, such as `badToken`; null if it has none. Programs
// can rely on the name: it does not change when the wording does.
[[nodiscard]] VRN_API const char* messageName(const char* format) noexcept;

// Reads VRN text from memory and adds it to the scene. True if the whole text was read.
VRN_API bool parseString(interfaces::IScene* scene, String text);

// Reads VRN text from an open file, starting at its current position, and adds it to the scene. Unless `merge` is set,
// first resets the scene's comments, file version and file time; nodes are always kept. The second form also records
// where the text sets what (SourceMap.h).
VRN_API bool parseVrn(interfaces::IScene* scene, File file, bool merge);
VRN_API bool parseVrn(interfaces::IScene* scene, File file, bool merge, SourceMap& sources);

} // namespace vor::velmo_sdk::impl

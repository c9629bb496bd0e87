// The reader: VRN text into a scene.
//
//     Scene scene;
//     File file = File::open("scene.vrn");
//     try {
//         if (!parseVrn(&scene, file, false))
//             ...                            // the log says why; the scene holds what came before
//     } catch (const ReadError& error) {     // the very first tokens of the text are no VRN
//         ...
//     }
//     if (!file.error().isEmpty())           // it could not be opened, or not be read to its end: to the
//         ...                                // reader that is a text that ends there
//
// Statements are applied to the scene one by one; the first syntax error ends the parse, is logged as
// an error, and makes the result false. What was applied stays. Wrong types and links to what is not
// there are only logged. Every diagnostic goes to the log (scene/core/Log.h) with its position in the
// text. An error among the first three tokens is thrown instead of logged, as a ReadError.
//
// A parse runs on the caller's thread; two may run at once on different scenes. Time is linear in the
// text. Memory: the scene, a record for each link, twice the text of the longest token that is not a buffer's
// list, and half that of the longest compressed payload.
// std::bad_alloc passes through, and the scene stays sound. examples/read_scene.cpp is a whole program.
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"

#include <stdexcept>

namespace vor::velmo_sdk::impl {

// An error in a text; what() is the finished message, format() that of its LogRecord.
class ReadError : public std::runtime_error {
public:
    ReadError(const String& message, TextPosition position, const char* format = nullptr)
        : std::runtime_error(message.buf()), position_(position), format_(format) {}
    [[nodiscard]] TextPosition position() const noexcept { return position_; }
    [[nodiscard]] const char* format() const noexcept { return format_; }

private:
    TextPosition position_;
    const char* format_;
};

// What the reader calls the kind of message that a record or error with this format is, such as `badToken`: a name that
// programs may go by, for it stays when the words change. Null if it has none.
[[nodiscard]] const char* messageName(const char* format) noexcept;

// Reads VRN text held in memory on top of what the scene holds. True when the whole text was read.
bool parseString(interfaces::IScene* scene, String text);

// Reads VRN text from an open file, from its current position. Without `merge` the scene's comments,
// file version and file time are first reset; its nodes never are.
bool parseVrn(interfaces::IScene* scene, File file, bool merge);

} // namespace vor::velmo_sdk::impl

// Writes a scene as VRN.
//
//     const std::vector<VrnLoss> losses =
//         writeVrn(scene, {}, [](std::string_view text) { std::cout << text; });
//     for (const VrnLoss& loss : losses)
//         std::cerr << loss.path << ": " << loss.what << '\n';
//
// The text reads back without diagnostics, unless a comment states a version that is not a number, or a value is not in
// the enumeration of its input. If the scene was read without diagnostics, the text reads back as the same scene bit
// for bit (comments, version, time, order of nodes, definitions, inputs, values and links), except that a NaN may lose
// its sign and payload, and the result is written as the same text.
//
// A program, or a file with type errors, can create more than the format can express. It is left out, or written as the
// nearest form that the format has, and listed: names that are not identifiers and links to them, buffers whose element
// type is unknown or has no keyword, comments that are not one `#` line, the element type of an array that its elements
// do not imply. An element without a type, or a reference, in an array of another element type is written with that
// type; it keeps its index and connection and is listed.
//
// If the scene has a catalogue, the text has to be read with it, and the inputs that it declares come first. An input
// whose name is an older name of another input is written with an older name of its own, and listed if it has none.
// Locked and link-only inputs are written without values, and listed if theirs differ from the catalogue's. What the
// catalogue creates, even a buffer without an element type, is no loss. Marks, enumerations and unconnected outputs are
// never written or listed.
#pragma once

#include "scene/Scene.h"
#include "scene/core/Export.h"
#include "scene/core/TextSink.h"

#include <limits>
#include <vector>

namespace vor::velmo_sdk::impl {

struct VrnWriterOptions {
    // Lists that extend beyond this column, or have more than 1024 numbers, are wrapped after whole elements onto
    // lines of their own; 0 disables wrapping.
    u32 column = 100;

    // Buffers with components of one byte are compressed if they have more bytes than this.
    u64 compressAbove = std::numeric_limits<u64>::max();

    // Without, each buffer is written as one of its type without elements: for those that keep them elsewhere.
    bool hasElements = true;
};

// A part of the scene that the text does not reproduce.
struct VrnLoss {
    String path;      // of the node or input; empty for the file itself
    const char* what; // a string literal
};

// Passes the text to `sink` in pieces of about 64 KiB. Linear in the scene and in the paths of its inputs, which are
// repeated in each statement. Propagates exceptions of `sink`, and std::bad_alloc. Several threads may write one scene.
[[nodiscard]] VRN_API std::vector<VrnLoss> writeVrn(const Scene& scene, const VrnWriterOptions& options,
                                                    const TextSink& sink);

// Writes the text to a file, which appears complete or not at all: on an error, an existing file is unchanged. Follows
// links and keeps the mode of a file that it replaces. Throws std::system_error, whose code is that of the system, if
// the file cannot be written.
[[nodiscard]] VRN_API std::vector<VrnLoss> writeVrnFile(const Scene& scene, const String& path,
                                                        const VrnWriterOptions& options = {});

} // namespace vor::velmo_sdk::impl

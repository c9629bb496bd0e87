// A scene as VRN text.
//
//     const std::vector<VrnLoss> losses =
//         writeVrn(scene, {}, [](std::string_view text) { std::cout << text; });
//     for (const VrnLoss& loss : losses)
//         std::cerr << loss.path << ": " << loss.what << '\n';
//
// What is written reads back, without a word in the log, as a scene that is the same bit for bit: comments, version,
// time, nodes in their order, definitions, inputs, values and links; written again it is the same text. What the
// format cannot say is left out, or written as the nearest that it can say, and listed. (A comment with a version that
// is no number is warned of whenever it is read.)
//
// That is for a scene that is read without a catalogue. With the catalogue that the scene has, the catalogue's inputs
// come first. Inputs that take no value (locked, link-only) get none, and are listed if they have another than the
// catalogue gives them. Marks, enumerations and outputs that nothing is connected to are not written.
#pragma once

#include "scene/Scene.h"
#include "scene/core/Export.h"
#include "scene/core/TextSink.h"

#include <limits>
#include <vector>

namespace vor::velmo_sdk::impl {

struct VrnWriterOptions {
    // Lists that go beyond this column, or have more than a thousand numbers, get lines of their own, of whole
    // elements; 0: never.
    u32 column = 100;

    // Buffers of bytes that take more than this are compressed.
    u64 compressAbove = std::numeric_limits<u64>::max();
};

// Something that the text does not say as the scene has it.
struct VrnLoss {
    String path;      // a node, an input; empty for what is about the whole file
    const char* what; // a literal
};

// Writes the scene in pieces of some 64 KiB; the text is never held whole. Linear in the scene, but for the paths
// that deep inputs repeat. What `sink` throws passes through, and so does std::bad_alloc.
[[nodiscard]] VRN_API std::vector<VrnLoss> writeVrn(const Scene& scene, const VrnWriterOptions& options,
                                                    const TextSink& sink);

} // namespace vor::velmo_sdk::impl

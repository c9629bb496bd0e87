#include "python/src/Module.h"
#include "scene/SceneJson.h"
#include "scene/VrnWriter.h"
#include "scene/core/OutputFile.h"

#include <algorithm>
#include <limits>

namespace vrn::python {

using vor::OutputFile;
using vor::OutputFileError;
using vor::TextSink;
using vor::velmo_sdk::impl::SceneJsonOptions;
using vor::velmo_sdk::impl::VrnLoss;
using vor::velmo_sdk::impl::VrnWriterOptions;
using vor::velmo_sdk::impl::writeSceneJson;
using vor::velmo_sdk::impl::writeVrn;

namespace {

nb::tuple lossesOf(const std::vector<VrnLoss>& losses) {
    nb::list made;
    for (const VrnLoss& loss : losses)
        made.append(imported("vrn._results", "Loss")(str(loss.what), 1, str(loss.path)));
    return nb::tuple(made);
}

VrnWriterOptions optionsOf(vor::u32 column, std::optional<vor::u64> compressAbove) {
    return {.column = column, .compressAbove = compressAbove.value_or(std::numeric_limits<vor::u64>::max())};
}

// Writes a piece to a stream, which may take only a part of it at a time.
void writeAll(nb::handle write, bool isRaw, std::string_view piece) {
    while (!piece.empty()) {
        const nb::object taken = write(nb::bytes(piece.data(), piece.size()));
        if (taken.is_none() && isRaw)
            raise(PyExc_BlockingIOError, "the stream takes no bytes without blocking");
        if (!PyLong_Check(taken.ptr()))
            return; // such as None from a function that takes everything
        piece.remove_prefix(std::min(nb::cast<std::size_t>(taken), piece.size()));
    }
}

// An object with `write()` gets the whole text in pieces of bytes.
nb::tuple writeToStream(const Box& box, nb::handle stream, const VrnWriterOptions& options) {
    const nb::object write = stream.attr("write");
    const bool isRaw = nb::isinstance(stream, imported("io", "RawIOBase"));
    std::vector<VrnLoss> losses;
    {
        const ReadTurn turn(box->turns);
        losses = writeVrn(box->scene, options, [&](std::string_view piece) {
            const nb::gil_scoped_acquire held;
            writeAll(write, isRaw, piece);
        });
    }
    return lossesOf(losses);
}

nb::tuple writeToPath(const Box& box, nb::handle target, const VrnWriterOptions& options) {
    const Path path = pathOf(target);
    std::vector<VrnLoss> losses;
    int error = 0;
    {
        const ReadTurn turn(box->turns);
        try {
            OutputFile file(path.bytes);
            losses = writeVrn(box->scene, options, [&](std::string_view piece) { file.write(piece); });
            file.commit();
        } catch (const OutputFileError& failure) {
            error = failure.code().value();
        }
    }
    if (error != 0)
        raiseOsError(error, path.name);
    return lossesOf(losses);
}

nb::tuple write(const Box& box, nb::handle target, vor::u32 column, std::optional<vor::u64> compressAbove) {
    const VrnWriterOptions options = optionsOf(column, compressAbove);
    return nb::hasattr(target, "write") ? writeToStream(box, target, options) : writeToPath(box, target, options);
}

// The text that `produce` passes to a sink while the scene is read.
template <class Produce> nb::str textFrom(const Box& box, Produce produce) {
    std::string text;
    {
        const ReadTurn turn(box->turns);
        const TextSink sink = [&](std::string_view piece) { text += piece; };
        produce(sink);
    }
    return str(text);
}

nb::str dumps(const Box& box, vor::u32 column, std::optional<vor::u64> compressAbove) {
    return textFrom(box,
                    [&](const TextSink& sink) { (void)writeVrn(box->scene, optionsOf(column, compressAbove), sink); });
}

nb::str toJson(const Box& box, bool hasData, bool isCompact) {
    return textFrom(box, [&](const TextSink& sink) {
        writeSceneJson(box->scene, {.isCompact = isCompact, .hasBufferData = hasData}, sink);
    });
}

} // namespace

void defineWriting(SceneClass& scene) {
    scene
        .def("write", &write, nb::arg("target"), nb::kw_only(), nb::arg("column") = 100,
             nb::arg("compress_above").none() = nb::none(),
             nb::sig("def write(self, target: Target, *, column: int = 100, compress_above: int | None = None) -> "
                     "tuple[Loss, ...]"),
             "Writes the scene as VRN and returns what the text does not reproduce.\n\n"
             "A file is written whole or not at all: on an error, one that was there stays as it was. An object with "
             "`write()`\n"
             "gets bytes. Lists are wrapped at the column; buffers of bytes larger than `compress_above` are "
             "compressed.\n"
             "Raises OSError. Releases the GIL.")
        .def("dumps", &dumps, nb::kw_only(), nb::arg("column") = 100, nb::arg("compress_above").none() = nb::none(),
             nb::sig("def dumps(self, *, column: int = 100, compress_above: int | None = None) -> str"),
             "The scene as VRN text. See write().")
        .def("to_json", &toJson, nb::kw_only(), nb::arg("data") = true, nb::arg("compact") = false,
             nb::sig("def to_json(self, *, data: bool = True, compact: bool = False) -> str"),
             "The scene as JSON; without `data`, only the type and number of elements of each buffer.");
}

} // namespace vrn::python

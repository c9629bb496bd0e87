#include "convert/Conversion.h"
#include "inspect/read/SceneFile.h"
#include "python/src/Diagnostics.h"
#include "python/src/Module.h"
#include "python/src/References.h"
#include "scene/core/OutputFile.h"

#include <cmath>
#include <optional>

namespace vrn::python {

namespace {

nb::tuple lossesOf(const convert::Losses& losses) {
    nb::list made;
    for (const convert::Loss& loss : losses.all())
        made.append(imported("vrn._results", "Loss")(str(loss.what), loss.count, str(loss.first)));
    return nb::tuple(made);
}

// A file that is read into a scene of its own.
void readVrn(Scene& scene, const std::string& path) {
    inspect::SceneFile file(nameOfFile(path));
    file.read(scene);
    const inspect::Diagnosis diagnosis = file.diagnosisWithLines();
    if (!diagnosis.isWhole())
        throw convert::FileError(path, std::string(diagnosis.readError.view()));
    if (!diagnosis.hasErrors())
        return;
    const nb::gil_scoped_acquire held;
    raiseParseError(diagnosis, nb::none(), diagnosis.isAccepted ? "DiagnosticsError" : "ParseError");
}

class Steps final : public convert::Conversion::Steps {
public:
    Steps(const std::string& output, convert::Losses& losses) : output_(output), losses_(losses) {}

    void readText(Scene& scene, const std::string& input) override { readVrn(scene, input); }
    void readModel(Scene& scene, const std::string& input, const convert::TexturePaths& paths,
                   const convert::ReadOptions& options) override {
        convert::readModel(input, scene, losses_, paths, options);
    }
    void write(const Scene& scene, const convert::TexturePaths& paths, const convert::WriteOptions& options) override {
        convert::writeScene(scene, output_, losses_, paths, options);
    }

private:
    const std::string& output_;
    convert::Losses& losses_;
};

// Runs `work`, which releases the GIL, and raises its errors as those of Python.
template <class Work> void converting(nb::handle target, Work work) {
    try {
        work();
    } catch (const convert::ContentError& error) {
        raiseOwn("ConversionError", error.path() + ": " + error.what());
    } catch (const convert::FileError& error) {
        raiseOsError(error.what(), str(error.path()));
    } catch (const vor::OutputFileError& error) {
        raiseOsError(error.code().value(), target);
    }
}

void refuseMisuse(const convert::Conversion& conversion) {
    using enum convert::Misuse::Kind;
    const auto misuse = conversion.misuse();
    if (!misuse)
        return;
    switch (misuse->kind) {
    case UnreadableFormat:
        raise(PyExc_ValueError,
              "the format '" + misuse->format + "' cannot be read; these can: .vrn " + convert::readableExtensions());
    case UnwritableFormat:
        raise(PyExc_ValueError,
              "the format '" + misuse->format + "' cannot be written; these can: " + convert::writableExtensions());
    case OnlyOneForm:
        raise(PyExc_ValueError, "the format '" + misuse->format + "' has one form only");
    case ImagesTwice:
        raise(PyExc_ValueError, "images are either embedded or files");
    case TrianglesOnlyOfModels:
        raise(PyExc_ValueError, "`triangulate` is for models, not for VRN files and scenes");
    }
}

nb::tuple convertPath(nb::handle source, nb::handle target, convert::Request request) {
    request.inputs = {pathOf(source).bytes};
    (void)imported("os", "stat")(source); // the reason and its errno if the file cannot be found
    const convert::Conversion conversion(std::move(request));
    refuseMisuse(conversion);
    convert::Losses losses;
    converting(target, [&] {
        const nb::gil_scoped_release released;
        Steps steps(conversion.request().output, losses);
        conversion.run(losses, steps);
    });
    return lossesOf(losses);
}

nb::tuple convertScene(const Box& box, nb::handle target, convert::Request request) {
    const convert::PlacementOptions& placement = request.inputPlacement;
    if (request.images.isWanted() || placement.up || placement.metres || placement.factor != 1)
        raise(PyExc_ValueError, "a scene is converted as it is: these options are for files");
    const convert::Conversion conversion(std::move(request));
    refuseMisuse(conversion);
    convert::Losses losses;
    converting(target, [&] {
        const ReadTurn turn(box->turns);
        convert::writeScene(box->scene, conversion.request().output, losses, {},
                            {.format = conversion.outputFormat(), .isAscii = conversion.request().isAscii});
    });
    return lossesOf(losses);
}

std::string shown(double number) { return nb::cast<std::string>(nb::str(nb::float_(number))); }

nb::tuple convertAny(nb::handle source, nb::handle target, nb::handle from, nb::handle to, nb::handle up,
                     std::optional<double> metres, double scale, bool isAscii, bool isTriangulated, bool isEmbedded,
                     nb::handle copyTo, nb::handle extractTo) {
    const auto textOr = [](nb::handle given) { return given.is_none() ? std::string() : textOf(given); };
    const auto pathOr = [](nb::handle given) { return given.is_none() ? std::string() : pathOf(given).bytes; };
    convert::Request request{
        .output = pathOf(target).bytes,
        .from = textOr(from),
        .to = textOr(to),
        .inputPlacement = {.metres = metres, .factor = scale},
        .images = {.isEmbedded = isEmbedded, .copyTo = pathOr(copyTo), .extractTo = pathOr(extractTo)},
        .isTriangulated = isTriangulated,
        .isAscii = isAscii};
    if (!(scale >= 0) || std::isinf(scale))
        raise(PyExc_ValueError, "the scale is a finite number of at least 0, not " + shown(scale));
    if (metres && (!(*metres > 0) || std::isinf(*metres)))
        raise(PyExc_ValueError, "the unit is a finite number of metres above 0, not " + shown(*metres));
    if (const std::string axis = textOr(up); axis == "X" || axis == "Y" || axis == "Z")
        request.inputPlacement.up = axis[0];
    else if (!axis.empty())
        raise(PyExc_ValueError, "the axis that points up is X, Y or Z, not '" + axis + "'");
    if (nb::isinstance<SceneBox>(source))
        return convertScene(nb::cast<Box>(source), target, std::move(request));
    return convertPath(source, target, std::move(request));
}

nb::tuple words(const std::string& text) { return nb::tuple(nb::str(text.c_str()).attr("split")()); }

} // namespace

void bindConversion(nb::module_& m) {
    m.def("convert", &convertAny, nb::arg("source"), nb::arg("target"), nb::kw_only(),
          nb::arg("from_format").none() = nb::none(), nb::arg("to_format").none() = nb::none(),
          nb::arg("up").none() = nb::none(), nb::arg("metres").none() = nb::none(), nb::arg("scale") = 1.0,
          nb::arg("ascii") = false, nb::arg("triangulate") = false, nb::arg("embed") = false,
          nb::arg("copy_textures").none() = nb::none(), nb::arg("extract_textures").none() = nb::none(),
          nb::sig("def convert(source: Path | Scene, target: Path, *, from_format: str | None = None, to_format: str | "
                  "None = None, "
                  "up: str | None = None, metres: float | None = None, scale: float = 1.0, ascii: bool = False, "
                  "triangulate: bool = False, "
                  "embed: bool = False, copy_textures: Path | None = None, extract_textures: Path | None = None) -> "
                  "tuple[Loss, ...]"),
          "Converts a file, or writes a scene in another format, and returns what is lost.\n\n"
          "The extensions determine the formats, unless they are named (`glb`). `up` (X, Y or Z) and `metres`, the "
          "length of a\n"
          "unit, are what the source is in, instead of what it says; `scale` is in addition. `ascii` is for PLY and "
          "STL.\n"
          "Raises ValueError for a format that cannot be read or written, OSError, ConversionError for content that "
          "cannot be\n"
          "converted, and ParseError for a VRN file with errors.");
    m.attr("readable_formats") = words(".vrn " + convert::readableExtensions());
    m.attr("writable_formats") = words(convert::writableExtensions());
}

} // namespace vrn::python

#include "convert/Convert.h"
#include "inspect/read/SceneFile.h"
#include "python/src/Diagnostics.h"
#include "python/src/Module.h"
#include "python/src/References.h"
#include "scene/core/OutputFile.h"

#include <cmath>
#include <optional>

namespace vrn::python {

namespace {

// The format of a file as an extension with its dot.
std::string formatOf(const std::string& path, const std::string& format) {
    if (format.empty())
        return convert::extensionOf(path);
    return format.starts_with('.') ? format : '.' + format;
}

nb::tuple lossesOf(const convert::Losses& losses) {
    nb::list made;
    for (const convert::Loss& loss : losses.all())
        made.append(imported("vrn._results", "Loss")(str(loss.what), loss.count, str(loss.first)));
    return nb::tuple(made);
}

struct ConvertOptions {
    std::string from{}; // formats as extensions with their dot
    std::string to{};
    convert::PlacementOptions placement{};
    convert::ImageOptions images{};
    bool isAscii = false;
    bool isTriangulated = false;
};

// A file that is read into a scene of its own.
void readVrn(Scene& scene, const std::string& path) {
    inspect::SceneFile file{std::string_view(path)};
    file.read(scene, vor::Notices::No);
    const inspect::Diagnosis diagnosis = file.diagnosisWithLines();
    if (!diagnosis.isWhole())
        throw convert::FileError(path, std::string(diagnosis.readError.view()));
    if (!diagnosis.hasErrors())
        return;
    const nb::gil_scoped_acquire held;
    raiseParseError(diagnosis, nb::none(), diagnosis.isAccepted ? "DiagnosticsError" : "ParseError");
}

void convertFile(const std::string& source, const std::string& target, const ConvertOptions& options,
                 convert::Losses& losses) {
    Scene scene;
    const convert::TexturePaths paths(source, target);
    const bool isVrn = options.from == ".vrn";
    if (isVrn) {
        readVrn(scene, source);
        if (options.images.isWanted())
            convert::rebaseTextures(scene, paths);
        convert::place(scene, convert::withOptions({}, options.placement), losses);
    } else {
        convert::readModel(
            source, scene, losses, paths,
            {.format = options.from, .placement = options.placement, .isTriangulated = options.isTriangulated});
    }
    convert::ImageFiles images(options.images, target, losses);
    images.apply(scene);
    convert::writeScene(scene, target, losses, isVrn && !options.images.isWanted() ? paths : convert::TexturePaths(),
                        {.format = options.to, .isAscii = options.isAscii});
    images.write();
}

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

void checkFormats(const ConvertOptions& options) {
    if (options.from != ".vrn" && !convert::canRead(options.from))
        raise(PyExc_ValueError,
              "the format '" + options.from + "' cannot be read; these can: .vrn " + convert::readableExtensions());
    if (!convert::canWrite(options.to))
        raise(PyExc_ValueError,
              "the format '" + options.to + "' cannot be written; these can: " + convert::writableExtensions());
    if (options.isAscii && !convert::hasTwoForms(options.to))
        raise(PyExc_ValueError, "the format '" + options.to + "' has one form only");
    if (options.images.isEmbedded && (!options.images.copyTo.empty() || !options.images.extractTo.empty()))
        raise(PyExc_ValueError, "images are either embedded or files");
}

nb::tuple convertPath(nb::handle source, nb::handle target, ConvertOptions options) {
    const std::string in = pathOf(source).bytes;
    const std::string out = pathOf(target).bytes;
    (void)imported("os", "stat")(source); // the reason and its errno if the file cannot be found
    options.from = formatOf(in, options.from);
    options.to = formatOf(out, options.to);
    checkFormats(options);
    convert::Losses losses;
    converting(target, [&] {
        const nb::gil_scoped_release released;
        convertFile(in, out, options, losses);
    });
    return lossesOf(losses);
}

nb::tuple convertScene(const Box& box, nb::handle target, ConvertOptions options) {
    const std::string out = pathOf(target).bytes;
    options.from = ".vrn";
    options.to = formatOf(out, options.to);
    checkFormats(options);
    if (options.images.isWanted() || options.placement.up || options.placement.metres || options.placement.factor != 1)
        raise(PyExc_ValueError, "a scene is converted as it is: these options are for files");
    convert::Losses losses;
    converting(target, [&] {
        const ReadTurn turn(box->turns);
        convert::writeScene(box->scene, out, losses, {}, {.format = options.to, .isAscii = options.isAscii});
    });
    return lossesOf(losses);
}

nb::tuple convertAny(nb::handle source, nb::handle target, nb::handle from, nb::handle to, nb::handle up,
                     std::optional<double> metres, double scale, bool isAscii, bool isTriangulated, bool isEmbedded,
                     nb::handle copyTo, nb::handle extractTo) {
    const auto textOr = [](nb::handle given) { return given.is_none() ? std::string() : textOf(given); };
    const auto pathOr = [](nb::handle given) { return given.is_none() ? std::string() : pathOf(given).bytes; };
    ConvertOptions options{
        .from = textOr(from), .to = textOr(to), .isAscii = isAscii, .isTriangulated = isTriangulated};
    options.placement = {.metres = metres, .factor = scale};
    if (const std::string axis = textOr(up); axis == "X" || axis == "Y" || axis == "Z")
        options.placement.up = axis[0];
    else if (!axis.empty())
        raise(PyExc_ValueError, "the axis that points up is X, Y or Z, not '" + axis + "'");
    options.images = {.isEmbedded = isEmbedded, .copyTo = pathOr(copyTo), .extractTo = pathOr(extractTo)};
    if (nb::isinstance<SceneBox>(source))
        return convertScene(nb::cast<Box>(source), target, std::move(options));
    return convertPath(source, target, std::move(options));
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

#include "check/Findings.h"
#include "check/SceneCheck.h"
#include "impl/Formatter.h"
#include "inspect/read/SceneFile.h"
#include "inspect/report/Report.h"
#include "python/src/Diagnostics.h"
#include "python/src/Interrupts.h"
#include "python/src/Memory.h"
#include "python/src/Module.h"
#include "python/src/SharedCatalogue.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <new>
#include <optional>

namespace vrn::python {

using inspect::Diagnosis;
using inspect::SceneFile;
using vor::File;

namespace {

// A path, for OSError, and the file there.
struct NamedFile {
    nb::object path = nb::none();
    SceneFile file;
};

NamedFile fromMemory(nb::handle data, const std::string& name) {
    Memory memory = memoryOf(data);
    return {.file = SceneFile(std::string_view(name), memory.bytes, std::move(memory.keeper))};
}

// What is no regular file, such as a pipe, is opened by Python, whose signals can interrupt that.
NamedFile fromPath(nb::handle given) {
    const Path path = pathOf(given);
    std::error_code ignored;
    const auto type = std::filesystem::status(path.bytes, ignored).type();
    if (type != std::filesystem::file_type::regular && type != std::filesystem::file_type::not_found) {
        const nb::object file = imported("io", "open")(path.name, "rb", 0);
        const nb::object data = file.attr("readall")();
        file.attr("close")();
        return fromMemory(data, path.bytes);
    }
    return {.path = path.name, .file = SceneFile(nameOfFile(path.bytes))};
}

// A path, or a file object, which is read to its end.
NamedFile sourceOf(nb::handle source) {
    if (PyUnicode_Check(source.ptr()) || !nb::hasattr(source, "read"))
        return fromPath(source);
    const nb::object name = nb::getattr(source, "name", nb::none());
    const nb::object data = source.attr("read")();
    return fromMemory(data, PyUnicode_Check(name.ptr()) ? textOf(name) : "<stream>");
}

// How a text is read.
struct ReadOptions {
    bool hasNotices = false;
    bool isMerge = false;                  // keeps the header of the scene
    const check::Options* check = nullptr; // looks for what the catalogue finds wrong, too
};

// Reads a text into a scene, without the GIL.
Diagnosis diagnosisOf(SceneFile& file, Scene& scene, const ReadOptions& options, Interrupts& interrupts) {
    if (options.check && scene.catalogue())
        file.recordSources();
    file.read(scene, {.notices = options.hasNotices ? vor::Notices::Yes : vor::Notices::No,
                      .onFetch = interrupts.watch(),
                      .isMerge = options.isMerge});
    if (options.check)
        file.check(scene, *options.check);
    return interrupts.isPending() ? Diagnosis() : file.diagnosisWithLines(); // lines are read once more
}

// The same for a scene of Python's. Raises OSError, and what a signal handler raises.
Diagnosis read(const Box& box, NamedFile source, const ReadOptions& options) {
    Interrupts interrupts([&] { source.file.requestStop(); });
    Diagnosis diagnosis;
    {
        const ChangeTurn turn(box->turns);
        diagnosis = diagnosisOf(source.file, box->scene, options, interrupts);
    }
    interrupts.raisePending();
    if (!diagnosis.isWhole())
        raiseOsError(diagnosis.readError.view(), source.path);
    box->diagnostics = diagnosticsOf(diagnosis);
    return diagnosis;
}

void readOrRaise(const Box& box, NamedFile source, bool isStrict, const ReadOptions& options) {
    const Diagnosis diagnosis = read(box, std::move(source), options);
    if (!diagnosis.isAccepted)
        raiseParseError(diagnosis, nb::cast(box), "ParseError");
    if (isStrict && !diagnosis.diagnostics.empty())
        raiseParseError(diagnosis, nb::cast(box), "DiagnosticsError");
}

nb::object newScene(nb::handle catalogue, nb::handle limits) {
    return nb::type<SceneBox>()(nb::arg("catalogue") = catalogue, nb::arg("limits") = limits);
}

nb::object readFile(nb::handle source, nb::handle catalogue, nb::handle limits, bool isStrict, bool hasNotices) {
    nb::object scene = newScene(catalogue, limits);
    readOrRaise(nb::cast<Box>(scene), sourceOf(source), isStrict, {.hasNotices = hasNotices});
    return scene;
}

nb::object loads(nb::handle data, nb::handle catalogue, nb::handle limits, bool isStrict, bool hasNotices) {
    nb::object scene = newScene(catalogue, limits);
    readOrRaise(nb::cast<Box>(scene), fromMemory(data, "<string>"), isStrict, {.hasNotices = hasNotices});
    return scene;
}

void update(const Box& box, nb::handle source, bool isStrict, bool hasNotices) {
    readOrRaise(box, sourceOf(source), isStrict, {.hasNotices = hasNotices, .isMerge = true});
}

void apply(const Box& box, nb::handle data, bool isStrict, bool hasNotices) {
    readOrRaise(box, fromMemory(data, "<string>"), isStrict, {.hasNotices = hasNotices, .isMerge = true});
}

check::Options checkOptions(nb::handle ignored, bool isPedantic) {
    check::Options options{.isPedantic = isPedantic};
    const std::vector<std::string> kinds = check::kindNames();
    for (const nb::handle name : nb::iter(ignored)) {
        const std::string kind = textOf(name);
        if (std::ranges::find(kinds, kind) == kinds.end()) {
            std::string all;
            for (const std::string& known : kinds)
                all += ' ' + known;
            raise(PyExc_ValueError, "'" + kind + "' is no kind of finding; these are:" + all);
        }
        options.ignored.insert(kind);
    }
    return options;
}

Diagnosis checkFile(nb::handle source, nb::handle catalogue, nb::handle limits, nb::handle ignored, bool isPedantic) {
    const nb::object scene = newScene(catalogue, limits);
    const check::Options options = checkOptions(ignored, isPedantic);
    return read(nb::cast<Box>(scene), sourceOf(source), {.hasNotices = true, .check = &options});
}

// What a check found in one of several files.
struct Checked {
    Diagnosis diagnosis;
    double seconds;
};

// Nothing for what is no regular file, cannot be read or needs too much memory. `file` becomes the one of the path.
std::optional<Checked> checked(const Path& path, const SharedCatalogue* catalogue, const check::Options& options,
                               Interrupts& interrupts, std::optional<SceneFile>& file) {
    const auto start = std::chrono::steady_clock::now();
    try {
        if (file.emplace(nameOfFile(path.bytes)).isReadOnce())
            return std::nullopt;
        Scene scene;
        if (catalogue)
            scene.setCatalogue(catalogue->types);
        Diagnosis diagnosis = diagnosisOf(*file, scene, {.hasNotices = true, .check = &options}, interrupts);
        if (!diagnosis.isWhole())
            return std::nullopt;
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        return Checked{std::move(diagnosis), seconds.count()};
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

// Threads that needed the GIL for each of many small files would mostly wait for it.
nb::list checkFiles(nb::handle paths, const SharedCatalogue* catalogue, nb::handle ignored, bool isPedantic) {
    const check::Options options = checkOptions(ignored, isPedantic);
    std::vector<Path> names;
    for (const nb::handle path : nb::iter(paths))
        names.push_back(pathOf(path));
    std::vector<std::optional<Checked>> found(names.size());
    std::optional<SceneFile> file;
    bool isStopped = false;
    Interrupts interrupts([&] {
        isStopped = true;
        if (file)
            file->requestStop();
    });
    {
        const nb::gil_scoped_release released;
        for (std::size_t i = 0; i < names.size() && !isStopped; ++i)
            found[i] = checked(names[i], catalogue, options, interrupts, file);
    }
    interrupts.raisePending();
    nb::list made;
    for (const std::optional<Checked>& each : found)
        made.append(each ? nb::object(nb::make_tuple(!each->diagnosis.hasErrors(), diagnosticsOf(each->diagnosis),
                                                     each->seconds))
                         : nb::none());
    return made;
}

nb::str format(nb::handle data, vor::u32 column) {
    const Memory memory = memoryOf(data);
    std::string formatted;
    Diagnosis refusal{.name = "<string>"};
    {
        const nb::gil_scoped_release released;
        try {
            vor::velmo_sdk::impl::formatVrn(memory.bytes, {.column = column},
                                            [&](std::string_view piece) { formatted += piece; });
            refusal.isAccepted = true;
        } catch (const vor::velmo_sdk::impl::FormatError& error) {
            auto lines = inspect::readExcerpts(File::fromMemory(memory.bytes, memory.keeper), {error.position()});
            refusal.diagnostics.push_back(
                {{vor::LogSeverity::Error, error.what(), error.position()}, std::move(lines.front())});
        }
    }
    if (!refusal.isAccepted)
        raiseParseError(refusal, nb::none(), "ParseError");
    return str(formatted);
}

void bindReport(nb::module_& m) {
    const auto text = [](inspect::MakeReport make) {
        return [make](const Diagnosis& diagnosis) { return str(inspect::reportText(make, {&diagnosis, 1})); };
    };
    nb::class_<Diagnosis>(
        m, "Report",
        "What a check found. True if there are no errors; the string is the report that `vrn check` prints.")
        .def_prop_ro(
            "filename", [](const Diagnosis& diagnosis) { return str(diagnosis.displayName()); },
            "The name of the file.")
        .def_prop_ro(
            "ok", [](const Diagnosis& diagnosis) { return !diagnosis.hasErrors(); },
            "Whether there are no errors. Warnings do not count.")
        .def_prop_ro("diagnostics", &diagnosticsOf, nb::sig("def diagnostics(self) -> tuple[Diagnostic, ...]"),
                     "Everything that was found, in order.")
        .def("to_sarif", text(&inspect::makeSarifReport), "The report as SARIF 2.1.0, for code scanning.")
        .def("to_json", text(&inspect::makeJsonReport), "The report as one line of JSON.")
        .def("to_github", text(&inspect::makeGithubReport), "The report as workflow commands of GitHub.")
        .def("__bool__", [](const Diagnosis& diagnosis) { return !diagnosis.hasErrors(); })
        .def("__str__", text(&inspect::makeTextReport))
        .def("__repr__", [](const Diagnosis& diagnosis) {
            return str("<vrn.Report on " + std::string(vor::escapeForTerminal(diagnosis.displayName()).view()) + ": " +
                       std::to_string(diagnosis.count(vor::LogSeverity::Error)) + " errors, " +
                       std::to_string(diagnosis.warnings()) + " warnings>");
        });
}

} // namespace

void defineUpdates(SceneClass& scene) {
    scene
        .def("update", &update, nb::arg("source"), nb::kw_only(), nb::arg("strict") = false, nb::arg("notices") = false,
             nb::sig("def update(self, source: Source, *, strict: bool = False, notices: bool = False) -> None"),
             "Reads a file on top of the scene: its statements change nodes that exist. See read().")
        .def("apply", &apply, nb::arg("data"), nb::kw_only(), nb::arg("strict") = false, nb::arg("notices") = false,
             nb::sig("def apply(self, data: Data, *, strict: bool = False, notices: bool = False) -> None"),
             "Reads a text on top of the scene: its statements change nodes that exist. See loads().");
}

void bindReading(nb::module_& m) {
    m.def(
        "read", &readFile, nb::arg("source"), nb::kw_only(), nb::arg("catalogue").none() = nb::none(),
        nb::arg("limits").none() = nb::none(), nb::arg("strict") = false, nb::arg("notices") = false,
        nb::sig("def read(source: Source, *, catalogue: Catalogue | None = None, limits: Limits | None = None, strict: "
                "bool = False, notices: bool = False) -> Scene"),
        "Reads a file into a new scene.\n\n"
        "The source is a path or an object with `read()`. What the reader says about the text is in "
        "`scene.diagnostics`;\n"
        "notices are about what it accepts silently. Raises ParseError if the text ends with an error, with `strict` "
        "also\n"
        "DiagnosticsError if anything is said about it, and OSError. Releases the GIL; signals such as Ctrl-C end "
        "it.\n\n"
        ">>> vrn.read('city.vrn')\n"
        "<vrn.Scene of 10 nodes>");
    m.def(
        "loads", &loads, nb::arg("data"), nb::kw_only(), nb::arg("catalogue").none() = nb::none(),
        nb::arg("limits").none() = nb::none(), nb::arg("strict") = false, nb::arg("notices") = false,
        nb::sig("def loads(data: Data, *, catalogue: Catalogue | None = None, limits: Limits | None = None, strict: "
                "bool = False, notices: bool = False) -> Scene"),
        "Reads a text into a new scene: a str or an object with a buffer of bytes, which is not copied. See read().\n\n"
        ">>> vrn.loads('mesh box; box.size = 2;')['box']['size']\n"
        "2");
    m.def("check", &checkFile, nb::arg("source"), nb::kw_only(), nb::arg("catalogue").none() = nb::none(),
          nb::arg("limits").none() = nb::none(), nb::arg("ignored") = nb::tuple(), nb::arg("pedantic") = false,
          nb::sig("def check(source: Source, *, catalogue: Catalogue | None = None, limits: Limits | None = None, "
                  "ignored: collections.abc.Iterable[str] = (), pedantic: bool = False) -> Report"),
          "Checks a file as `vrn check` does: what the reader says, notices included, and what a catalogue finds "
          "wrong.\n\n"
          "`ignored` names kinds of findings; `pedantic` reports unused nodes, too. Never raises for what the text "
          "says, only\n"
          "OSError if it cannot be read.\n\n"
          ">>> vrn.check('city.vrn').ok\n"
          "True\n"
          ">>> print(vrn.check('city.vrn'), end='')\n"
          "1 file checked: 0 errors, 0 warnings");
    m.def("check_files", &checkFiles, nb::arg("paths"), nb::kw_only(), nb::arg("catalogue").none(), nb::arg("ignored"),
          nb::arg("pedantic"),
          nb::sig("def check_files(paths: collections.abc.Sequence[Path], *, catalogue: Catalogue | None, ignored: "
                  "collections.abc.Iterable[str], pedantic: bool) -> list[tuple[bool, tuple[Diagnostic, ...], float] | "
                  "None]"),
          "What check() finds in each of many files: whether there are no errors, the diagnostics, and the seconds.\n\n"
          "None for a file for which check() raises, and for one that it has to read in another way.");
    bindReport(m);
    m.def("format", &format, nb::arg("text"), nb::kw_only(), nb::arg("column") = 100,
          nb::sig("def format(text: Data, *, column: int = 100) -> str"),
          "Lays out a text: blanks between tokens and line feeds in lists, but no tokens change.\n\n"
          "Lists are wrapped at the column; 0 wraps none. Raises ParseError for a text with lexical errors.\n\n"
          ">>> print(vrn.format('mesh   box ; box.uv=vec2f[2]{0 0,1 1};'), end='')\n"
          "mesh box;\n"
          "box.uv = vec2f[2] {0 0 1 1};");
}

} // namespace vrn::python

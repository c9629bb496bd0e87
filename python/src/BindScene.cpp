#include "python/src/Assignment.h"
#include "python/src/Mapping.h"
#include "python/src/Module.h"
#include "python/src/NamedViews.h"
#include "python/src/Names.h"
#include "python/src/SharedCatalogue.h"

#include <nanobind/stl/tuple.h>

namespace vrn::python {

using vor::velmo_sdk::impl::SceneLimits;

namespace {

auto nodeNames(const Scene& scene) {
    return scene.nodes() | std::views::transform([](const Node& node) { return node.key().view(); });
}

const Scene& read(const Box& box) {
    box->turns.beforeReading();
    return box->scene;
}
Scene& change(const Box& box) {
    box->turns.beforeChanging();
    return box->scene;
}

nb::object getItem(const Box& box, nb::handle name) {
    const std::string text = textOf(name);
    const Scene& scene = read(box);
    if (Node* node = scene.findNode(std::string_view(text)))
        return nb::cast(NodeReference(box, node));
    raiseMissing(text, nodeNames(scene));
}

bool hasNode(const Box& box, nb::handle name) {
    const std::optional<std::string> text = nameIn(name);
    return text && read(box).findNode(std::string_view(*text)) != nullptr;
}

nb::object namesOfNodes(const Box& box) {
    nb::list names;
    for (const std::string_view name : nodeNames(read(box)))
        names.append(str(name));
    return nb::iter(names);
}

NodeReference added(const Box& box, Node* node, const String& name) {
    if (!node)
        raise(PyExc_ValueError, "the scene has a node '" + std::string(name.view()) + "' already");
    return {box, node};
}

NodeReference add(const Box& box, nb::handle type, nb::handle name) {
    const String kind = identifierOf(type);
    const String key = identifierOf(name);
    return added(box, change(box).createNode(kind, key), key);
}

NodeReference define(const Box& box, nb::handle name) {
    const String key = identifierOf(name);
    return added(box, change(box).defineNode(key), key);
}

void deleteItem(const Box& box, nb::handle name) {
    const std::string text = textOf(name);
    Scene& scene = change(box);
    if (!scene.removeNode(std::string_view(text)))
        raiseMissing(text, nodeNames(scene));
}

nb::list nodes(const Box& box, nb::handle type) {
    const String wanted = type.is_none() ? String() : sceneTextOf(type);
    nb::list found;
    for (Node& node : const_cast<Scene&>(read(box)).nodes())
        if (type.is_none() || node.type() == wanted)
            found.append(NodeReference(box, &node));
    return found;
}

nb::object comments(const Box& box) {
    nb::list made;
    for (const String& comment : read(box).fileComments())
        made.append(str(comment));
    return nb::tuple(made);
}

void setComments(const Box& box, nb::handle texts) {
    vor::StringVector comments;
    for (const nb::handle text : nb::iter(texts))
        comments.push(sceneTextOf(text));
    Scene& scene = change(box);
    scene.clearComments();
    for (const String& comment : comments)
        scene.pushFileComment(comment);
}

Box makeScene(nb::object catalogue, const SceneLimits* limits) {
    auto box = std::make_shared<SceneBox>();
    if (!catalogue.is_none() && !nb::isinstance<SharedCatalogue>(catalogue))
        raise(PyExc_TypeError, "the catalogue is a vrn.Catalogue: use Catalogue.read() for a file");
    if (!catalogue.is_none())
        box->scene.setCatalogue(nb::cast<const SharedCatalogue&>(catalogue).types);
    box->catalogue = std::move(catalogue);
    if (limits)
        box->scene.setLimits(*limits);
    return box;
}

std::string description(const Box& box) {
    const vor::u64 count = read(box).nodeCount();
    return "<vrn.Scene of " + std::to_string(count) + (count == 1 ? " node>" : " nodes>");
}

void bindLimits(nb::module_& m) {
    nb::class_<SceneLimits>(m, "Limits", "Bounds on the memory that a text can make the reader allocate.")
        .def(
            "__init__",
            [](SceneLimits* limits, vor::u64 arrayElements, vor::u64 bufferBytes, vor::u64 unnamedElements) {
                new (limits) SceneLimits{arrayElements, bufferBytes, unnamedElements};
            },
            nb::kw_only(), nb::arg("array_elements") = SceneLimits().maxArrayElements,
            nb::arg("buffer_bytes") = SceneLimits().maxBufferBytes,
            nb::arg("unnamed_elements") = SceneLimits().maxImplicitElements)
        .def("__getstate__",
             [](const SceneLimits& limits) {
                 return std::make_tuple(limits.maxArrayElements, limits.maxBufferBytes, limits.maxImplicitElements);
             })
        .def("__setstate__",
             [](SceneLimits& limits, const std::tuple<vor::u64, vor::u64, vor::u64>& state) {
                 new (&limits) SceneLimits{std::get<0>(state), std::get<1>(state), std::get<2>(state)};
             })
        .def_ro("array_elements", &SceneLimits::maxArrayElements, "The elements of one array.")
        .def_ro("buffer_bytes", &SceneLimits::maxBufferBytes, "The bytes of one buffer.")
        .def_ro("unnamed_elements", &SceneLimits::maxImplicitElements,
                "The elements of all arrays that exist only because a text names a higher index.");
}

} // namespace

void bindScene(nb::module_& m) {
    bindLimits(m);
    auto scene =
        nb::class_<SceneBox>(
            m, "Scene", nb::sig("class Scene(collections.abc.Mapping[str, Node])"),
            "The nodes of a file by name, in order of creation, and what the file says of itself.\n\n"
            "Any number of threads may use a scene: reads of texts, writes and queries release the GIL and wait for\n"
            "each other where they have to.")
            .def(nb::new_(&makeScene), nb::kw_only(), nb::arg("catalogue").none() = nb::none(),
                 nb::arg("limits").none() = nb::none())
            .def("__getitem__", &getItem, nb::arg("name"), nb::sig("def __getitem__(self, name: str, /) -> Node"))
            .def("__delitem__", &deleteItem, nb::arg("name"), nb::sig("def __delitem__(self, name: str, /) -> None"),
                 "Removes a node. Inputs that are linked to it lose the link.")
            .def("__len__", [](const Box& box) { return read(box).nodeCount(); })
            .def("__bool__", [](const Box&) { return true; })
            .def("__contains__", &hasNode, nb::arg("name").none(),
                 nb::sig("def __contains__(self, name: object, /) -> bool"))
            .def("__iter__", &namesOfNodes, nb::sig("def __iter__(self) -> collections.abc.Iterator[str]"))
            .def("nodes", &nodes, nb::kw_only(), nb::arg("type").none() = nb::none(),
                 nb::sig("def nodes(self, *, type: str | None = None) -> list[Node]"),
                 "The nodes, or those of a type, in order.")
            .def("add", &add, nb::arg("type"), nb::arg("name"), nb::sig("def add(self, type: str, name: str) -> Node"),
                 "Adds a node with the inputs that its type has by a definition or the catalogue. Raises ValueError if "
                 "the name is taken, or if a text cannot say it.")
            .def("define", &define, nb::arg("name"), nb::sig("def define(self, name: str) -> Node"),
                 "Adds a definition: nodes of this type get copies of its inputs. Raises ValueError if the name is "
                 "taken, or if a text cannot say it.")
            .def_prop_rw(
                "version", [](const Box& box) { return read(box).fileVersion(); },
                [](const Box& box, vor::u64 version) { change(box).setFileVersion(version); },
                "The version of the format that the file states.", nb::for_setter(nb::arg("version")))
            .def_prop_rw(
                "time", [](const Box& box) { return str(read(box).fileTime()); },
                [](const Box& box, nb::str time) { change(box).setFileTime(sceneTextOf(time)); },
                "The time that the file states, as text.", nb::for_setter(nb::arg("time")))
            .def_prop_rw("comments", &comments, &setComments,
                         nb::for_getter(nb::sig("def comments(self) -> tuple[str, ...]")),
                         nb::for_setter(nb::sig("def comments(self, texts: collections.abc.Iterable[str], /) -> None")),
                         "The comments at the start of the file.")
            .def_prop_ro(
                "limits", [](const Box& box) { return read(box).limits(); }, "The limits that reading texts obeys.")
            .def_prop_ro(
                "catalogue", [](const Box& box) { return box->catalogue; },
                nb::sig("def catalogue(self) -> Catalogue | None"),
                "The node types that new nodes are made by, or None.")
            .def_prop_ro(
                "diagnostics", [](const Box& box) { return box->diagnostics; },
                nb::sig("def diagnostics(self) -> tuple[Diagnostic, ...]"), "What the last read said about its text.")
            .def(
                "_repr_html_", [](nb::handle self) { return imported("vrn._html", "scene_html")(self); },
                nb::sig("def _repr_html_(self) -> str"), "The nodes as HTML, for notebooks.")
            .def("__repr__", [](const Box& box) { return str(description(box)); });
    defineMapping(scene, "Node");
    defineQueries(scene);
    defineColumns(scene);
    defineEquality(scene);
    defineCopies(m, scene);
    defineWriting(scene);
    defineUpdates(scene);
}

} // namespace vrn::python

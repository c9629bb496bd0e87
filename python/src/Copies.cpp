#include "python/src/Copies.h"

#include "impl/BufferType.h"
#include "inspect/read/SceneFile.h"
#include "inspect/value/ValueText.h"
#include "python/src/Buffers.h"
#include "python/src/Memory.h"
#include "python/src/Module.h"
#include "python/src/SharedCatalogue.h"
#include "scene/VrnWriter.h"
#include "scene/Walk.h"

namespace vrn::python {

using vor::velmo_sdk::impl::bufferType;
using vor::velmo_sdk::impl::SceneLimits;
using vor::velmo_sdk::impl::VrnLoss;

namespace {

// Calls `visit` with each input and its place.
template <class Visit> void forEachPlace(const Scene& scene, Visit visit) {
    Place place = 0;
    for (const Node& node : scene.nodes())
        forEachInput(node, [&](const Input& input) { visit(input, place++); });
}

bool hasMarks(const Input& input) { return input.isLocked() || input.isLinkOnly() || !input.enumeration().isEmpty(); }

// Restores what the text does not say. Returns whether everything has found its place.
bool complete(Scene& scene, SceneParts& parts) {
    std::vector<Input*> inputs;
    forEachPlace(scene, [&](const Input& input, Place) { inputs.push_back(const_cast<Input*>(&input)); });
    for (auto& [place, buffer] : parts.buffers)
        if (place >= inputs.size() || inputs[place]->dataType() != buffer.dataType() ||
            !inputs[place]->assign(std::move(buffer)))
            return false;
    for (auto& [place, isLocked, isLinkOnly, enumeration] : parts.marks) {
        if (place >= inputs.size())
            return false;
        inputs[place]->setLocked(isLocked);
        inputs[place]->setLinkOnly(isLinkOnly);
        inputs[place]->setEnumeration(std::move(enumeration));
    }
    return true;
}

bool restore(Scene& scene, SceneParts& parts) {
    inspect::SceneFile file("<copy>", parts.text, nullptr);
    file.read(scene);
    return file.diagnosis().isAccepted && complete(scene, parts);
}

// What pickle stores; vrn._pickle says how.
nb::tuple stateOf(const Box& box) {
    SceneParts parts = partsOf(*box);
    nb::list buffers;
    for (auto& [place, buffer] : parts.buffers) {
        const std::string type = inspect::dataTypeText(buffer.dataType());
        buffers.append(nb::make_tuple(place, type, bytesOf(std::move(buffer))));
    }
    nb::list marks;
    for (const auto& [place, isLocked, isLinkOnly, enumeration] : parts.marks) {
        nb::list entries;
        for (const String& entry : enumeration)
            entries.append(str(entry));
        marks.append(nb::make_tuple(place, isLocked, isLinkOnly, nb::tuple(entries)));
    }
    return nb::make_tuple(nb::bytes(parts.text.data(), parts.text.size()), nb::tuple(buffers), nb::tuple(marks),
                          parts.limits, parts.catalogue, parts.diagnostics);
}

SceneParts::Elements elementsFrom(nb::handle place, nb::handle typeName, nb::handle bytes) {
    const DataType* type = bufferType(textOf(typeName));
    const Memory memory = memoryOf(bytes);
    const std::size_t size = type ? elementLayout(*type).elementSize() : 0;
    if (size == 0 || memory.bytes.size() % size != 0)
        raise(PyExc_ValueError, "the pickled buffers are not those of a scene");
    return {nb::cast<Place>(place),
            AttrData::adopt(*type, memory.bytes.size() / size, memory.bytes.data(), memory.keeper)};
}

SceneParts::Marks marksFrom(nb::handle place, nb::handle isLocked, nb::handle isLinkOnly, nb::handle entries) {
    SceneParts::Marks marks{nb::cast<Place>(place), nb::cast<bool>(isLocked), nb::cast<bool>(isLinkOnly), {}};
    for (const nb::handle entry : nb::iter(entries))
        marks.enumeration.push(sceneTextOf(entry));
    return marks;
}

Box restored(nb::handle text, nb::handle buffers, nb::handle marks, const SceneLimits& limits, nb::object catalogue,
             nb::object diagnostics) {
    SceneParts parts{.text = std::string(memoryOf(text).bytes),
                     .limits = limits,
                     .catalogue = std::move(catalogue),
                     .diagnostics = std::move(diagnostics)};
    for (const nb::handle stored : nb::iter(buffers))
        parts.buffers.push_back(elementsFrom(stored[0], stored[1], stored[2]));
    for (const nb::handle stored : nb::iter(marks))
        parts.marks.push_back(marksFrom(stored[0], stored[1], stored[2], stored[3]));
    return sceneOf(std::move(parts));
}

} // namespace

SceneParts partsOf(SceneBox& box) {
    SceneParts parts{.limits = box.scene.limits(), .catalogue = box.catalogue, .diagnostics = box.diagnostics};
    const std::set<const Input*> edited = box.edited; // which needs the GIL
    std::vector<VrnLoss> losses;
    {
        const ReadTurn turn(box.turns);
        losses = writeVrn(box.scene, {.hasElements = false}, [&](std::string_view piece) { parts.text += piece; });
        forEachPlace(box.scene, [&](const Input& input, Place place) {
            if (hasMarks(input))
                parts.marks.push_back({place, input.isLocked(), input.isLinkOnly(), input.enumeration()});
            if (input.type() != AttrType::Buffer || input.value().count() == 0)
                return;
            parts.buffers.push_back({place, input.value().share()});
            if (edited.contains(&input)) // its memory is being written
                (void)parts.buffers.back().buffer.bytes();
        });
    }
    if (!losses.empty())
        raise(PyExc_ValueError, "a scene cannot be copied that has what no text says: " +
                                    std::string(losses[0].path.view()) + ": " + losses[0].what);
    return parts;
}

Box sceneOf(SceneParts parts) {
    auto box = std::make_shared<SceneBox>();
    if (!parts.catalogue.is_none())
        box->scene.setCatalogue(nb::cast<const SharedCatalogue&>(parts.catalogue).types);
    box->scene.setLimits(parts.limits);
    box->catalogue = parts.catalogue;
    box->diagnostics = parts.diagnostics;
    bool isRestored = false;
    {
        const ChangeTurn turn(box->turns);
        isRestored = restore(box->scene, parts);
    }
    if (!isRestored)
        raise(PyExc_ValueError, "the pickled parts are not those of a scene");
    return box;
}

void defineCopies(nb::module_& m, SceneClass& scene) {
    const auto copy = [](const Box& box) { return sceneOf(partsOf(*box)); };
    scene
        .def("__copy__", copy,
             "A scene of its own with the same content. Buffers share their memory until one changes.")
        .def(
            "__deepcopy__", [copy](const Box& box, nb::handle) { return copy(box); }, nb::arg("memo"),
            nb::sig("def __deepcopy__(self, memo: dict[int, typing.Any], /) -> Scene"), "The same as copy.copy().")
        .def(
            "__reduce_ex__",
            [](nb::handle self, int protocol) { return imported("vrn._pickle", "reduced")(self, protocol); },
            nb::arg("protocol"),
            nb::sig("def __reduce_ex__(self, protocol: typing.SupportsIndex, /) -> tuple[typing.Any, ...]"));
    m.def("state_of", &stateOf, nb::arg("scene"), nb::sig("def state_of(scene: Scene) -> tuple[typing.Any, ...]"));
    m.def("restored", &restored, nb::arg("text"), nb::arg("buffers"), nb::arg("marks"), nb::arg("limits"),
          nb::arg("catalogue").none(), nb::arg("diagnostics"),
          nb::sig("def restored(text: bytes, buffers: tuple[typing.Any, ...], marks: tuple[typing.Any, ...], "
                  "limits: Limits, catalogue: Catalogue | None, diagnostics: tuple[Diagnostic, ...]) -> Scene"));
}

} // namespace vrn::python

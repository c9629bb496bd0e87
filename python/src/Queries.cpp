#include "python/src/Queries.h"

#include "inspect/path/ScenePath.h"
#include "python/src/Buffers.h"
#include "python/src/Values.h"

namespace vrn::python {

using inspect::forEachMatch;
using inspect::parsePath;
using inspect::PathError;
using inspect::PathMatch;
using inspect::ScenePath;

ScenePath pathFrom(nb::handle text) {
    try {
        return parsePath(textOf(text));
    } catch (const PathError& error) {
        raise(PyExc_ValueError, "the path '" + textOf(text) + "' is malformed " + error.what());
    }
}

namespace {

nb::object sliceOf(const PathMatch& match, const Box& box) {
    const Input& input = *match.input;
    if (input.type() == AttrType::Buffer)
        return arrayOf(box, input)[imported("builtins", "slice")(match.first, match.first + match.count)];
    nb::list values;
    for (vor::u64 i = match.first; i < match.first + match.count && i < input.size(); ++i)
        values.append(valueOf(box, *input.children()[i]));
    return values;
}

nb::object found(const PathMatch& match, const Box& box) {
    switch (match.kind) {
    case PathMatch::Kind::Node:
        return nb::cast(NodeReference(box, const_cast<Node*>(match.node)));
    case PathMatch::Kind::NodeName:
        return str(match.node->key());
    case PathMatch::Kind::NodeType:
        return str(match.node->type());
    case PathMatch::Kind::Input:
        return valueOf(box, *match.input);
    case PathMatch::Kind::Count:
        return nb::int_(match.count);
    case PathMatch::Kind::Slice:
        return sliceOf(match, box);
    case PathMatch::Kind::BufferElement:
        break;
    }
    needNumpy();
    return arrayOf(box, *match.input)[nb::int_(match.first)];
}

// What a path matches. Values are made of them afterwards, because that can run Python code, which may change the
// scene: the references keep what the matches refer to.
class Matches {
public:
    Matches(const Box& box, const ScenePath& path) : box_(box) {
        {
            const ReadTurn turn(box->turns);
            (void)forEachMatch(box->scene, path, [&](const PathMatch& match) { matches_.push_back(match); });
        }
        for (const PathMatch& match : matches_) {
            nodes_.emplace_back(box, const_cast<Node*>(match.node));
            if (match.input)
                inputs_.emplace_back(box, const_cast<Input*>(match.input));
        }
    }

    void forEach(auto visit) const {
        for (const PathMatch& match : matches_) {
            box_->turns.beforeReading();
            visit(match);
        }
    }

private:
    const Box& box_;
    std::vector<PathMatch> matches_;
    std::vector<NodeReference> nodes_;
    std::vector<InputReference> inputs_;
};

nb::object get(const Box& box, nb::handle path, nb::handle missing) {
    const std::string name = textOf(path);
    box->turns.beforeReading();
    if (Node* node = box->scene.findNode(std::string_view(name)))
        return nb::cast(NodeReference(box, node));
    const ScenePath parsed = pathFrom(path);
    if (parsed.isPattern())
        raise(PyExc_ValueError, "the path '" + parsed.text + "' can match several inputs: use query()");
    nb::object value = nb::borrow(missing);
    Matches(box, parsed).forEach([&](const PathMatch& match) { value = found(match, box); });
    return value;
}

nb::dict query(const Box& box, nb::handle path) {
    nb::dict values;
    Matches(box, pathFrom(path)).forEach([&](const PathMatch& match) {
        const nb::str label = str(pathText(match));
        values[label] = found(match, box);
    });
    return values;
}

} // namespace

void defineQueries(SceneClass& scene) {
    scene
        .def("get", &get, nb::arg("path"), nb::arg("default").none() = nb::none(),
             nb::sig("def get(self, path: str, default: typing.Any = None, /) -> typing.Any"),
             "What a path leads to, such as `box.uvsets[0].name`, or the default.\n\nRaises ValueError for a malformed "
             "path, and for one with a pattern.\n\n"
             ">>> vrn.read('city.vrn').get('box.uvsets[0].name')\n"
             "'uv0'")
        .def(
            "query", &query, nb::arg("path"), nb::sig("def query(self, path: str, /) -> dict[str, typing.Any]"),
            "All that a path with patterns and slices matches: the values by the paths that lead to them, in order.\n\n"
            "`*` matches any characters of a name, `?` one; `[2:5]` is a slice, `[*]` all elements.\n\n"
            ">>> vrn.read('city.vrn').query('cam*.fov')\n"
            "{'cam1.fov': 45.0}");
}

} // namespace vrn::python

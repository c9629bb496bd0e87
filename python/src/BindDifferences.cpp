#include "inspect/diff/DifferenceText.h"
#include "inspect/diff/SceneDifference.h"
#include "python/src/Module.h"
#include "python/src/References.h"

#include <optional>

namespace vrn::python {

using inspect::Difference;

namespace {

// What is kept of a Difference, which is valid only during the comparison.
struct Row {
    std::string path;
    const char* change;
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::string text;
};

const char* changeName(inspect::Change change) {
    switch (change) {
    case inspect::Change::Removed:
        return "removed";
    case inspect::Change::Added:
        return "added";
    case inspect::Change::Changed:
        break;
    }
    return "changed";
}

std::vector<Row> differences(const Scene& before, const Scene& after, double tolerance) {
    std::vector<Row> rows;
    inspect::compareScenes(before, after, tolerance, [&](const Difference& difference) {
        std::string line = inspect::differenceLine(difference, inspect::Style(false));
        line.pop_back(); // the line feed
        rows.push_back({std::string(difference.path), changeName(difference.change), difference.before,
                        difference.after, std::move(line)});
    });
    return rows;
}

nb::object optional(const std::optional<std::string>& text) { return text ? nb::object(str(*text)) : nb::none(); }

template <class Work> void whileReading(const Box& before, const Box& after, Work work) {
    const ReadTurn turnBefore(before->turns);
    const nb::gil_scoped_acquire held;
    const ReadTurn turnAfter(after->turns);
    work();
}

nb::object isEqual(const Box& scene, nb::handle value) {
    if (!nb::isinstance<SceneBox>(value))
        return nb::borrow(Py_NotImplemented);
    const auto other = nb::cast<Box>(value);
    bool areEqual = true;
    whileReading(scene, other, [&] {
        inspect::compareScenes(scene->scene, other->scene, 0, [&](const Difference&) { areEqual = false; });
    });
    return nb::bool_(areEqual);
}

nb::list diff(const Box& before, const Box& after, double tolerance) {
    if (!(tolerance >= 0))
        raise(PyExc_ValueError, "the tolerance is a number that is not negative");
    std::vector<Row> rows;
    whileReading(before, after, [&] { rows = differences(before->scene, after->scene, tolerance); });
    nb::list made;
    for (const Row& row : rows)
        made.append(imported("vrn._results", "Difference")(str(row.path), row.change, optional(row.before),
                                                           optional(row.after), str(row.text)));
    return made;
}

} // namespace

void defineEquality(SceneClass& scene) {
    scene.def("__eq__", &isEqual, nb::arg("other").none(), nb::sig("def __eq__(self, other: object, /) -> bool"),
              "Whether diff() finds no differences.");
    scene.attr("__hash__") = nb::none(); // it can change
}

void bindDifferences(nb::module_& m) {
    m.def("diff", &diff, nb::arg("before"), nb::arg("after"), nb::kw_only(), nb::arg("tolerance") = 0.0,
          nb::sig("def diff(before: Scene, after: Scene, *, tolerance: float = 0.0) -> list[Difference]"),
          "The differences between two scenes, in order; none if they are the same.\n\n"
          "Real numbers are equal if they differ by at most the tolerance.\n\n"
          ">>> print(*vrn.diff(vrn.loads('mesh box; box.size = 2;'), vrn.loads('mesh box; box.size = 3;')))\n"
          "~ box.size: 2 -> 3");
}

} // namespace vrn::python

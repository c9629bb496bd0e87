// The parts of the module, one function a file.
#pragma once

#include "python/src/References.h"

namespace vrn::python {

void bindOutput(nb::module_& m);
void bindInput(nb::module_& m);
void bindNode(nb::module_& m);
void bindScene(nb::module_& m);
void bindReading(nb::module_& m);
void bindCatalogue(nb::module_& m);
void bindDifferences(nb::module_& m);
void bindConversion(nb::module_& m);

// The methods of scenes that are in other files: update() and apply(); write(), dumps() and to_json(); get(), query();
// column(); copies and pickles; ==.
using SceneClass = nb::class_<SceneBox>;
void defineUpdates(SceneClass& scene);
void defineWriting(SceneClass& scene);
void defineQueries(SceneClass& scene);
void defineColumns(SceneClass& scene);
void defineEquality(SceneClass& scene);
void defineCopies(nb::module_& m, SceneClass& scene);

} // namespace vrn::python

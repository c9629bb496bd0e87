#include "python/src/Module.h"

NB_MODULE(_vrn, m) {
    using namespace vrn::python;
    m.doc() = "The scene model, the reader and the writer of VRN. Use the names of the package `vrn`.";
    nb::set_leak_warnings(false); // scenes can be alive when the interpreter ends, and nothing is ever printed
    m.attr("__version__") = VRN_VERSION;
    bindCatalogue(m);
    bindOutput(m);
    bindInput(m);
    bindNode(m);
    bindScene(m);
    bindReading(m);
    bindDifferences(m);
    bindConversion(m);
}

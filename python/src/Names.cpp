#include "python/src/Names.h"

#include "scene/core/TextEncoding.h"
#include "scene/syntax/Identifier.h"

namespace vrn::python {

using vor::String;

namespace {

[[noreturn]] void refuse(nb::handle name, const char* more) {
    raise(PyExc_ValueError, "'" + std::string(vor::escapeForTerminal(textOf(name)).view()) +
                                "' is not a name: use letters, digits and _, do not begin with a digit, and do not "
                                "use true, false and null" +
                                more);
}

} // namespace

String identifierOf(nb::handle name) {
    const String text = sceneTextOf(name);
    if (!vor::velmo_sdk::impl::isIdentifier(text.view()))
        refuse(name, "");
    return text;
}

String outputNameOf(nb::handle name) {
    const String text = sceneTextOf(name);
    if (!vor::velmo_sdk::impl::isOutputName(text.view()))
        refuse(name, "; indices such as [0] may follow");
    return text;
}

} // namespace vrn::python

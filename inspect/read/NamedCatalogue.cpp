#include "inspect/read/NamedCatalogue.h"

#include "inspect/text/WholeText.h"
#include "scene/CatalogueJson.h"
#include "scene/core/File.h"

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk::impl;

static String textOf(const String& path) {
    const File file = File::open(path);
    String text = readAll(file);
    if (!file.error().isEmpty())
        throw UnreadableFile(file.error().buf());
    return text;
}

std::shared_ptr<const Catalogue> readNamedCatalogue(const String& name) {
    if (name == builtinTypes)
        return std::make_shared<const Catalogue>(readCatalogue(builtinCatalogue));
    return std::make_shared<const Catalogue>(readCatalogue(textOf(name)));
}

} // namespace vrn::inspect

#include "cli/files/CatalogueFile.h"

#include "cli/files/BuiltinCatalogue.h"
#include "cli/files/TextFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "scene/CatalogueJson.h"
#include "scene/core/TextEncoding.h"

#include <cstdlib>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

static String typesOf(const std::string& option) {
    const char* variable = option.empty() ? std::getenv(typesVariable) : nullptr;
    return variable ? String(variable) : String(std::string_view(option));
}

static String textOf(const String& path) {
    if (path == builtinTypes)
        return builtinCatalogue;
    File file = File::open(path);
    String text = readAll(file);
    if (!file.error().isEmpty()) {
        complain(path, file.error());
        throw UnusableCatalogue();
    }
    return text;
}

std::shared_ptr<const Catalogue> loadCatalogue(const std::string& types) {
    const String path = typesOf(types);
    if (path.isEmpty())
        return nullptr;
    const String text = textOf(path);
    try {
        return std::make_shared<const Catalogue>(readCatalogue(text));
    } catch (const CatalogueError& error) {
        printError(String::format(messages::catalogueError, escapeForTerminal(path).buf(), error.position().line,
                                  error.position().column, error.what()));
        throw UnusableCatalogue();
    }
}

} // namespace vrn::cli

#include "cli/files/CatalogueFile.h"

#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "inspect/read/NamedCatalogue.h"
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

std::shared_ptr<const Catalogue> loadCatalogue(const std::string& types) {
    const String path = typesOf(types);
    if (path.isEmpty())
        return nullptr;
    try {
        return inspect::readNamedCatalogue(path);
    } catch (const inspect::UnreadableFile& error) {
        complain(path, error.what());
    } catch (const CatalogueError& error) {
        printError(String::format(messages::catalogueError, escapeForTerminal(path).buf(), error.position().line,
                                  error.position().column, error.what()));
    }
    throw UnusableCatalogue();
}

} // namespace vrn::cli

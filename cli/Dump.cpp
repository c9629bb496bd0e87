#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/SceneFile.h"
#include "scene/SceneJson.h"

#include <algorithm>

namespace vrn::cli {

using namespace vor;

int dump(const DumpOptions& options) {
    const auto catalogue = loadCatalogue(options.types);
    int status = exitOk;
    for (const std::string& name : options.files) {
        SceneFile file{String(std::string_view(name))};
        Scene scene;
        scene.setCatalogue(catalogue);
        if (!file.read(scene)) {
            status = exitTrouble;
            continue;
        }
        printError(file.diagnosticsText());
        writeSceneJson(scene, {.isCompact = options.isCompact, .hasBufferData = !options.isWithoutData}, print);
        if (file.hasErrors())
            status = std::max<int>(status, exitErrors);
    }
    return finishOutput() ? status : exitTrouble;
}

} // namespace vrn::cli

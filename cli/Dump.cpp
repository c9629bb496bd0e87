#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/SceneFile.h"
#include "scene/SceneJson.h"

namespace vrn::cli {

using namespace vor;

int dump(const DumpOptions& options) {
    const int status = forEachScene(options.scenes, [&](const SceneFile& file, const Scene& scene) {
        if (!file.isWhole())
            return;
        printError(file.diagnosticsText());
        writeSceneJson(scene, {.isCompact = options.isCompact, .hasBufferData = !options.isWithoutData}, print);
    });
    return finishOutput() ? status : exitTrouble;
}

} // namespace vrn::cli

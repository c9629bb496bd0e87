#include "impl/Reader.h"

#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

static void resetHeader(interfaces::IScene* scene) {
    if (!scene)
        return;
    Scene* target = static_cast<Scene*>(scene);
    target->clearComments();
    target->setFileVersion(VRX_FILE_VERSION_1);
    target->setFileTime("");
}

// Handles are passed by value, so that the caller may release its own during the parse.
// NOLINTBEGIN(performance-unnecessary-value-param)
bool parseString(interfaces::IScene* scene, String text) { return VrnParser().parse(scene, text); }

bool parseVrn(interfaces::IScene* scene, File file, bool merge) {
    if (!merge)
        resetHeader(scene);
    return VrnParser().parse(scene, file);
}

bool parseVrn(interfaces::IScene* scene, File file, bool merge, SourceMap& sources) {
    if (!merge)
        resetHeader(scene);
    VrnParser parser;
    parser.sources = &sources;
    return parser.parse(scene, file);
}
// NOLINTEND(performance-unnecessary-value-param)

} // namespace vor::velmo_sdk::impl

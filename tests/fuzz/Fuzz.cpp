#include "tests/fuzz/Fuzz.h"

#include "scene/SceneJson.h"
#include "tests/support/Invariants.h"

namespace vrn::fuzz {

std::string jsonOf(const Scene& scene) {
    std::string json;
    writeSceneJson(scene, {.isCompact = true}, [&](std::string_view piece) { json += piece; });
    return json;
}

void checkScene(const Scene& scene) {
    const std::string broken = test::brokenInvariant(scene);
    if (!broken.empty())
        fail(broken);
}

} // namespace vrn::fuzz

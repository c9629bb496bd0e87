// Any bytes as a text: the scene's invariants hold afterwards; it can be written as JSON, and read into again.
#include "tests/fuzz/Fuzz.h"

using namespace vrn::fuzz;

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const String text = asText(data, size);
    Scene scene;
    limit(scene);
    for (int i = 0; i < 2; ++i) { // the second time, the nodes exist
        (void)logOf([&] { return parseString(&scene, text); });
        checkScene(scene);
        (void)jsonOf(scene);
    }
    while (scene.nodeCount() != 0) {
        (void)scene.removeNode(scene.nodes().begin()->name());
        if (scene.nodeCount() < 8)
            checkScene(scene);
    }
    return 0;
}

// Any bytes as a catalogue: refused with a position, or usable for creating nodes of its types.
#include "scene/CatalogueJson.h"
#include "tests/fuzz/Fuzz.h"

using namespace vrn::fuzz;

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::shared_ptr<const Catalogue> catalogue;
    try {
        catalogue = std::make_shared<const Catalogue>(readCatalogue(asText(data, size)));
    } catch (const CatalogueError& error) {
        require(*error.what() && error.position().line >= 1 && error.position().column >= 0, "a reason and a place");
        return 0;
    }
    Scene scene;
    limit(scene);
    scene.setCatalogue(catalogue);
    scene.setStrictOutputs(true);
    for (const char* type : {"camera", "a", "b", "t", ""}) {
        Node* node = scene.createNode(type, String("n") + type);
        if (const NodeType* known = catalogue->find(type)) {
            require(node->inputs().size() >= 1 || known->inputs().empty(), "a node has its type's inputs");
            require(node->outputs().size() <= known->outputs().size(), "and no other outputs");
        }
    }
    (void)logOf([&] {
        return parseString(&scene, "na.fov = 2.5; na.fovy = 1; nb.x |= ncamera.out; ncamera.list[3] = vec3(1 2 3);"
                                   "define a; a q; q.s = \"text\"; q.b = float[2] {1 2}; q.n = ncamera;");
    });
    checkScene(scene);
    (void)jsonOf(scene);
    return 0;
}

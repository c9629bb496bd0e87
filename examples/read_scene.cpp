// Reads a scene and says what is in it.
#include "impl/Reader.h"
#include "scene/Scene.h"

#include <cstdio>

using namespace vor;
using namespace vor::velmo_sdk::impl;

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    // Everything that the reader has to say comes here, with its position in the text.
    const ScopedLogSink sink([](const LogRecord& record) {
        std::printf("%d:%d: %s\n", record.position.line, record.position.column, record.text.buf());
    });

    Scene scene;
    File file = File::open(argv[1]);
    try {
        if (!parseVrn(&scene, file, false))
            std::printf("stopped early; what came before is in the scene\n");
    } catch (const ReadError& error) {
        std::printf("no VRN at all: %s\n", error.what());
        return 1;
    }
    if (!file.error().isEmpty()) {
        std::printf("%s: %s\n", argv[1], file.error().buf());
        return 1;
    }

    for (const Node& node : scene.nodes()) {
        const Input* points = node.input("points");
        if (!points)
            continue;
        // The buffer itself, as floats: nothing is copied.
        double sum = 0;
        for (const float coordinate : points->value().elements<float>())
            sum += static_cast<double>(coordinate);
        const Input* material = node.input("material");
        std::printf("%s %s has %llu points (sum %g) and looks like %s\n", node.type().buf(), node.name().buf(),
                    static_cast<unsigned long long>(points->value().count()), sum,
                    material && material->connection() ? material->connection()->label().buf() : "nothing");
    }
}

// Reads a scene, prints its diagnostics, and sums up the points of each mesh.
#include <vrn/vrn.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    // Receives every diagnostic of this thread, with its position in the file.
    const vrn::ScopedLogSink sink([](const vrn::LogRecord& record) {
        std::printf("%d:%d: %s\n", record.position.line, record.position.column,
                    vrn::escapeForTerminal(record.text).buf());
    });

    vrn::Scene scene;
    vrn::File file = vrn::File::open(argv[1]);
    try {
        if (!vrn::parseVrn(&scene, file, false))
            std::printf("syntax error; the scene holds the statements before it\n");
    } catch (const vrn::ReadError& error) {
        std::printf("not a VRN file: %s\n", vrn::escapeForTerminal(error.what()).buf());
        return 1;
    }
    if (!file.error().isEmpty()) {
        std::printf("%s: %s\n", argv[1], file.error().buf());
        return 1;
    }

    for (const vrn::Node& node : scene.nodes()) {
        const vrn::Input* points = node.input("points");
        if (!points)
            continue;
        // A view of the buffer as floats; nothing is copied.
        double sum = 0;
        for (const float coordinate : points->value().elements<float>())
            sum += static_cast<double>(coordinate);
        const vrn::Input* material = node.input("material");
        std::printf("%s %s has %llu points (sum %g) and material %s\n", node.type().buf(), node.name().buf(),
                    static_cast<unsigned long long>(points->value().count()), sum,
                    material && material->connection() ? material->connection()->label().buf() : "none");
    }
}

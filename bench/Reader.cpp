// The reader: bench_reader string|file FILE.vrn
#include "impl/Reader.h"

#include "bench/Process.h"
#include "scene/Scene.h"

#include <memory>

using namespace vor;
using namespace vor::velmo_sdk::impl;

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const bool isString = std::string(argv[1]) == "string";
    String text;
    if (isString)
        text = std::string_view(vrn::bench::readFile(argv[2]));
    std::unique_ptr<Scene> scene;
    const auto read = [&] {
        scene = std::make_unique<Scene>();
        const bool isOk = isString ? parseString(scene.get(), text) : parseVrn(scene.get(), File::open(argv[2]), false);
        if (!isOk)
            std::exit(1);
    };
    return vrn::bench::measure(argv[1], argv[2], read, [&] { scene.reset(); });
}

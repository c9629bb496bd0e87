// Measures the reader and the writer: bench_reader string|file|avx2|baseline|write FILE.vrn
//
// Reads from memory, from a file, or from memory with a limited instruction set; or writes the scene.
#include "impl/Reader.h"

#include "bench/Process.h"
#include "scene/Scene.h"
#include "scene/VrnWriter.h"
#include "scene/core/InstructionSet.h"

#include <memory>

using namespace vor;
using namespace vor::velmo_sdk::impl;

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const std::string mode = argv[1];
    const bool isFile = mode == "file";
    if (mode == "avx2")
        limitInstructionSet(InstructionSet::Avx2);
    if (mode == "baseline")
        limitInstructionSet(InstructionSet::Baseline);
    String text;
    if (!isFile)
        text = std::string_view(vrn::bench::readFile(argv[2]));
    std::unique_ptr<Scene> scene;
    const auto read = [&] {
        scene = std::make_unique<Scene>();
        const bool isOk = isFile ? parseVrn(scene.get(), File::open(argv[2]), false) : parseString(scene.get(), text);
        if (!isOk)
            std::exit(1);
    };
    if (mode != "write")
        return vrn::bench::measure(argv[1], argv[2], read, [&] { scene.reset(); });
    read();
    text = String();
    std::size_t bytes = 0;
    const auto write = [&] {
        const auto losses = writeVrn(*scene, {}, [&](std::string_view piece) { bytes += piece.size(); });
        if (!losses.empty() || bytes == 0)
            std::exit(1);
    };
    return vrn::bench::measure(argv[1], argv[2], write, [] {});
}

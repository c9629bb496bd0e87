// Measures the reader and the writer: bench_reader string|file|write[-avx2|-vector128|-baseline] FILE.vrn
//
// Reads from memory or from a file, or writes the scene; with all instructions of the processor, or a limited set.
#include "impl/Reader.h"

#include "bench/Process.h"
#include "scene/Scene.h"
#include "scene/VrnWriter.h"
#include "scene/core/InstructionSet.h"

#include <memory>
#include <string_view>
#include <utility>

using namespace vor;
using namespace vor::velmo_sdk::impl;

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const std::string_view all = argv[1];
    const std::string_view mode = all.substr(0, all.find('-'));
    const bool isFile = mode == "file";
    for (const auto& [suffix, set] : {std::pair{"-avx2", InstructionSet::Avx2},
                                      {"-vector128", InstructionSet::Vector128},
                                      {"-baseline", InstructionSet::Baseline}})
        if (all.ends_with(suffix))
            limitInstructionSet(set);
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

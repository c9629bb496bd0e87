// Measures growth with the size of the input: bench_scale links N | input
//
// links: the time to read N connections and N references, repeated until a million of each is read. input: the memory
// in bytes of an input with a name of eight characters and a Real.
#include "bench/Process.h"
#include "impl/Reader.h"
#include "scene/Scene.h"

#include <memory>

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

// Nodes with a hundred inputs of each kind, linked to earlier and later nodes.
String linkedText(std::size_t links) {
    const std::size_t nodes = links / 100;
    std::string text;
    for (std::size_t i = 0; i < nodes; ++i)
        text += "t n" + std::to_string(i) + ";\n";
    for (std::size_t i = 0; i < links; ++i) {
        const std::string input = "n" + std::to_string(i / 100) + ".in" + std::to_string(i % 100);
        const std::string target = "n" + std::to_string(i * 7919 % nodes);
        text += input + " |= " + target + ".out;\n" + input + "r = " + target + ";\n";
    }
    return std::string_view(text);
}

int links(std::size_t count) {
    const String text = linkedText(count);
    std::unique_ptr<Scene> scene;
    const auto read = [&] {
        // The same amount of work for all sizes, for the same relative precision.
        for (std::size_t done = 0; done < 1000000; done += count) {
            scene = std::make_unique<Scene>();
            if (!parseString(scene.get(), text))
                std::exit(1);
        }
    };
    return vrn::bench::measure("links", std::to_string(count).c_str(), read, [&] { scene.reset(); });
}

std::size_t memoryOf(std::size_t inputs) {
    constexpr std::size_t nodes = 20000;
    std::string text;
    for (std::size_t i = 0; i < nodes; ++i) {
        text += "t n" + std::to_string(i) + ":\n";
        for (std::size_t n = 0; n < inputs; ++n)
            text += std::string(".absorb") + static_cast<char>('a' + n) + "x = 0.5;\n";
    }
    const String source = std::string_view(text);
    // Resident memory: the allocator counts address space around slabs of huge pages, which takes no memory.
    const auto held = [] { return vrn::bench::statusMiB("VmRSS") * (1 << 20); };
    Scene scene;
    const double before = held();
    if (!parseString(&scene, source))
        std::exit(1);
    return static_cast<std::size_t>((held() - before) / nodes);
}

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "links" && argc == 3)
        return links(std::stoul(argv[2]));
    if (mode != "input")
        return 2;
    std::printf("input - %zu 0 0\n", (memoryOf(12) - memoryOf(0)) / 12);
    return 0;
}

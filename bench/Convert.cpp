// Measures the writers of other formats: bench_convert FORMAT FILE.vrn
//
// Writes the scene with writeScene() to a file in the folder for temporary files; FORMAT is an extension without its
// point, `vrn` for the project's own writer.
#include "convert/Convert.h"
#include "impl/Reader.h"

#include "bench/Process.h"

#include <cstdlib>
#include <filesystem>

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    vrn::convert::Scene scene;
    if (!vor::velmo_sdk::impl::parseVrn(&scene, vor::File::open(argv[2]), false))
        return 1;
    const std::filesystem::path target =
        std::filesystem::temp_directory_path() / ("bench_convert." + std::string(argv[1]));
    const auto write = [&] {
        vrn::convert::Losses losses;
        vrn::convert::writeScene(scene, target, losses, {});
    };
    return vrn::bench::measure(argv[1], argv[2], write, [&] { std::filesystem::remove(target); });
}

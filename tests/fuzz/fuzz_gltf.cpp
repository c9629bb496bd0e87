// Any bytes as a glTF file: refused with a reason, or read; a scene that was read can be written, and is read again.
#include "convert/Convert.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace vrn::fuzz;
using namespace vrn::convert;

namespace {

// A folder of this process, in which inputs and results lie.
const std::filesystem::path& folder() {
    static const struct Temporary {
        Temporary() { std::filesystem::create_directories(path); }
        Temporary(const Temporary&) = delete;
        Temporary& operator=(const Temporary&) = delete;
        ~Temporary() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
        std::filesystem::path path = std::filesystem::temp_directory_path() / ("fuzz_gltf-" + std::to_string(getpid()));
    } temporary;
    return temporary.path;
}

bool read(const std::string& path, vrn::convert::Scene& scene, Losses& losses) {
    limit(scene);
    try {
        readModel(path, scene, losses, {});
        return true;
    } catch (const ContentError& error) {
        require(*error.what() != '\0', "a reason");
        return false;
    }
}

bool isWritten(const vrn::convert::Scene& scene, const std::string& path, Losses& losses) {
    try {
        writeScene(scene, path, losses, {});
        return true;
    } catch (const ContentError&) { // nothing in it
        return false;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const bool isBinary = asText(data, size).starts_with("glTF");
    const std::string input = folder() / (isBinary ? "in.glb" : "in.gltf");
    const std::string output = folder() / "out.glb";
    std::ofstream(input, std::ios::binary) << asText(data, size);
    vrn::convert::Scene scene;
    Losses losses;
    const bool isRead = read(input, scene, losses);
    checkScene(scene);
    Losses written;
    if (!isRead || !isWritten(scene, output, written))
        return 0;
    const bool isTooDeep = std::ranges::any_of(
        written.all(), [](const Loss& loss) { return loss.what.find("1000 levels") != std::string::npos; });
    vrn::convert::Scene again;
    Losses lost;
    const bool isReadAgain = read(output, again, lost);
    require(isReadAgain || isTooDeep, "a file that was written is read again");
    return 0;
}

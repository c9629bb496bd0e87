// A scene, and before it, if the input has a byte 0, a catalogue: the findings are in order and change nothing.
#include "check/SceneCheck.h"
#include "scene/CatalogueJson.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <tuple>

using namespace vrn::fuzz;

namespace {

std::shared_ptr<const Catalogue> sceneCatalogue() {
    static const auto catalogue = [] {
        std::ifstream file(VRN_CATALOGUE);
        return std::make_shared<const Catalogue>(readCatalogue(std::string{std::istreambuf_iterator<char>(file), {}}));
    }();
    return catalogue;
}

// Null if the text is no catalogue.
std::shared_ptr<const Catalogue> catalogueOf(std::string_view text) {
    try {
        return std::make_shared<const Catalogue>(readCatalogue(text));
    } catch (const CatalogueError&) {
        return {};
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input = asText(data, size);
    const std::size_t end = input.find('\0');
    const bool hasCatalogue = end != std::string_view::npos;
    const std::shared_ptr<const Catalogue> catalogue =
        hasCatalogue ? catalogueOf(input.substr(0, end)) : sceneCatalogue();
    if (!catalogue)
        return 0;
    Scene scene;
    limit(scene);
    scene.setCatalogue(catalogue);
    SourceMap sources;
    (void)logOf([&] {
        return parseVrn(&scene, File::fromMemory(hasCatalogue ? input.substr(end + 1) : input), false, sources);
    });
    const std::string before = jsonOf(scene);
    for (const bool isPedantic : {false, true}) {
        const auto findings = vrn::check::checkScene(scene, *catalogue, sources,
                                                     {.ignored = {}, .isPedantic = isPedantic, .folder = "/"});
        require(std::ranges::is_sorted(
                    findings, {},
                    [](const LogRecord& record) { return std::tuple(record.position.line, record.position.column); }),
                "findings in order of their positions");
        for (const LogRecord& finding : findings) {
            require(finding.severity == LogSeverity::Warning, "findings are warnings");
            require(!finding.text.isEmpty() && vrn::check::kindName(finding.format), "of a known kind");
        }
    }
    require(jsonOf(scene) == before, "a check changes nothing");
    checkScene(scene);
    return 0;
}

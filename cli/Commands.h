// What the command can do. Each function does its work for all files and returns the exit status.
#pragma once

#include "scene/Scene.h"

#include <string>
#include <vector>

namespace vrn::cli {

// Which scenes a command reads, and how.
struct SceneArguments {
    std::vector<std::string> files; // `-` is standard input
    std::string types;              // a catalogue, or empty
    vor::velmo_sdk::impl::SceneLimits limits;
};

struct CheckOptions {
    SceneArguments scenes;
    std::string format = "text"; // or "json"
    bool isWithoutLint = false;  // or says what the reader takes without a word, too
    bool isWarningError = false;
};

struct DumpOptions {
    SceneArguments scenes;
    bool isCompact = false;
    bool isWithoutData = false;
};

struct InfoOptions {
    SceneArguments scenes;
};

[[nodiscard]] int check(const CheckOptions& options);
[[nodiscard]] int dump(const DumpOptions& options);
[[nodiscard]] int info(const InfoOptions& options);

} // namespace vrn::cli

// What the command can do. Each function does its work for all files and returns the exit status.
#pragma once

#include "scene/core/String.h"

#include <string>
#include <vector>

namespace vrn::cli {

struct CheckOptions {
    std::vector<std::string> files;
    std::string types;           // a catalogue, or empty
    std::string format = "text"; // or "json"
    bool isWarningError = false;
};

struct DumpOptions {
    std::vector<std::string> files;
    std::string types;
    bool isCompact = false;
    bool isWithoutData = false;
};

struct InfoOptions {
    std::vector<std::string> files;
    std::string types;
};

[[nodiscard]] int check(const CheckOptions& options);
[[nodiscard]] int dump(const DumpOptions& options);
[[nodiscard]] int info(const InfoOptions& options);

} // namespace vrn::cli

// One conversion: what the arguments of `vrn convert` ask for.
#pragma once

#include "cli/files/SceneArguments.h"
#include "convert/Conversion.h"

#include <string>
#include <vector>

namespace vrn::cli {

struct ConvertOptions {
    std::vector<std::string> files; // the inputs and, unless `out` names it, the output
    std::string out;
    std::string from; // formats, without a dot; empty for those of the extensions
    std::string to;
    std::string up; // axes and units; empty for those that the files have
    std::string units;
    double scale = 1;
    std::string toUp;
    std::string toUnits;
    bool isTriangulated = false;
    bool isStrict = false;
    std::string losses = "text";
    vor::u64 maxMemory = 0; // in MiB; 0 for one that depends on the files
    vor::u64 timeout = 0;   // in seconds; 0 for one of the processor that depends on the files
    convert::ImageOptions images;
    bool isAscii = false;
    SceneArguments scenes;
};

struct Unit {
    const char* name;
    double metres;
};
inline constexpr Unit units[] = {{"mm", 0.001}, {"cm", 0.01}, {"m", 1}, {"km", 1000}, {"in", 0.0254}, {"ft", 0.3048}};

// Converts and reports; returns the exit status.
[[nodiscard]] int convertFiles(const ConvertOptions& options);

} // namespace vrn::cli

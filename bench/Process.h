// The measurements of one process: runs its work once cold and a few times warm, and prints
//   NAME FILE cold-seconds median-warm-seconds peak-MiB
// The peak does not include the memory held before the first run. run.py compares these lines.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <string>
#include <system_error>
#include <vector>

namespace vrn::bench {

inline std::string readFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::perror(path);
        std::exit(2);
    }
    file.seekg(0, std::ios::end);
    std::string text(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

// A line of /proc/self/status, in MiB: VmRSS is the resident memory, VmHWM its peak.
inline double statusMiB(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name + ":"))
            return std::stod(line.substr(name.size() + 1)) / 1024;
    return 0;
}

// Resets the peak to the current resident memory.
inline void resetPeak() { std::ofstream("/proc/self/clear_refs") << '5'; }

// Times `work`; `drop` frees its results, untimed. Large inputs are read into new memory each time. Small ones, which
// fit in the cache, are read many times into the same memory.
template <class Work, class Drop> int measure(const char* name, const char* file, Work work, Drop drop) {
    std::error_code none;
    const bool isSmall = std::filesystem::file_size(file, none) < 4 << 20;
    const int warmRuns = isSmall ? 101 : 3;
    resetPeak();
    const double before = statusMiB("VmRSS");
    double cold = 0;
    double peak = 0;
    std::vector<double> warm;
    for (int i = 0; i <= warmRuns; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        drop();
        if (!isSmall)
            malloc_trim(0);
        if (i == 0) {
            cold = seconds;
            peak = statusMiB("VmHWM") - before;
        } else {
            warm.push_back(seconds);
        }
    }
    std::ranges::nth_element(warm, warm.begin() + warmRuns / 2);
    std::printf("%s %s %.6f %.6f %.1f\n", name, file, cold, warm[static_cast<std::size_t>(warmRuns) / 2], peak);
    return 0;
}

} // namespace vrn::bench

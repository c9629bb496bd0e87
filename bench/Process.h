// One measured process: reads a file, does its work once cold and a few times warm, and prints
//   NAME FILE cold-seconds median-warm-seconds peak-MiB-beyond-the-text
// Ratios between such lines, taken alternately, are what the driver reports.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <string>
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

// A line of the process's status, in MiB: VmRSS is what it holds, VmHWM the most that it held.
inline double statusMiB(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name + ":"))
            return std::stod(line.substr(name.size() + 1)) / 1024;
    return 0;
}

// Makes the most that was held what is held now.
inline void forgetPeak() { std::ofstream("/proc/self/clear_refs") << '5'; }

// `work` is timed; `drop` frees what it made, untimed.
template <class Work, class Drop> int measure(const char* name, const char* file, Work work, Drop drop) {
    constexpr int warmRuns = 3;
    forgetPeak();
    const double before = statusMiB("VmRSS");
    double cold = 0;
    double peak = 0;
    std::vector<double> warm;
    for (int i = 0; i <= warmRuns; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        drop();
        malloc_trim(0);
        if (i == 0) {
            cold = seconds;
            peak = statusMiB("VmHWM") - before;
        } else {
            warm.push_back(seconds);
        }
    }
    std::ranges::nth_element(warm, warm.begin() + warmRuns / 2);
    std::printf("%s %s %.6f %.6f %.1f\n", name, file, cold, warm[warmRuns / 2], peak);
    return 0;
}

} // namespace vrn::bench

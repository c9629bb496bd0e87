// How far the reading of all files has come, or how long something else takes, on the terminal.
//
//     Progress progress({"a.vrn", "b.vrn"}, isQuiet);
//     file.onFetch([&](std::size_t bytes) { progress.advance(bytes); });
//
//     Progress progress("Writing", isQuiet);
//
// The line on standard error is there only where that is a terminal, after half a second, and rewritten ten times a
// second at most. Any thread may tell what it has read. It goes away with this, or when something is printed.
#pragma once

#include "scene/core/Types.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vrn::cli {

class Progress {
public:
    Progress(const std::vector<std::string>& files, bool isQuiet);
    Progress(const char* doing, bool isQuiet); // the time, from now on
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // So many bytes have been read; so many of a file will not be, because an error has ended it.
    void advance(vor::u64 bytes);
    void leaveOut(vor::u64 bytes);

    // From here on the line also changes while nothing is told.
    void keepShowing();

private:
    using Clock = std::chrono::steady_clock;
    [[nodiscard]] std::string line(std::chrono::milliseconds elapsed) const;

    void showIfDue();
    void watch(const std::stop_token& stop) noexcept;

    std::string doing_;
    bool isShown_;
    bool isTimed_ = false; // says how long it takes where nothing else is known
    std::mutex mutex_;     // of the numbers below
    vor::u64 read_ = 0;
    std::optional<vor::u64> total_; // unless there is a pipe among the files
    Clock::time_point begin_ = Clock::now();
    Clock::time_point next_ = begin_ + std::chrono::milliseconds(500);
    std::jthread watch_;
};

// For people: 999 bytes, 1.5 MB.
[[nodiscard]] std::string sizeText(vor::u64 bytes);

} // namespace vrn::cli

// Shows the progress of reading files, or the time that another operation takes, on the terminal.
//
//     Progress progress({"a.vrn", "b.vrn"}, isQuiet);
//     file.onFetch([&](std::size_t bytes) { progress.advance(bytes); });
//
//     Progress progress("Writing", isQuiet);
//
// The status line appears on standard error after half a second, if that is a terminal, and is updated at most ten
// times a second. Any thread may report progress. The destructor, and anything printed, removes the line.
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
    Progress(const char* activity, bool isQuiet); // shows the time since construction
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Reports that many bytes as read.
    void advance(vor::u64 bytes);

    // Subtracts bytes that will not be read, because an error ended the file, from the total.
    void skip(vor::u64 bytes);

    // Starts to update the line even while no progress is reported.
    void startTimer();

private:
    using Clock = std::chrono::steady_clock;
    [[nodiscard]] std::string line(std::chrono::milliseconds elapsed) const;

    void showIfDue();
    void runTimer(const std::stop_token& stop) noexcept;

    std::string activity_;
    bool isShown_;
    bool isTimed_ = false; // shows the elapsed time while the number of bytes is unknown
    std::mutex mutex_;     // guards the numbers below
    vor::u64 read_ = 0;
    std::optional<vor::u64> total_; // unknown if one of the files is a pipe
    Clock::time_point begin_ = Clock::now();
    Clock::time_point nextUpdate_ = begin_ + std::chrono::milliseconds(500);
    std::jthread timer_;
};

// A human-readable size: 999 bytes, 1.5 MB.
[[nodiscard]] std::string sizeText(vor::u64 bytes);

} // namespace vrn::cli

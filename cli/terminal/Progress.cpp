#include "cli/terminal/Progress.h"

#include "cli/terminal/Console.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <filesystem>
#include <new>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

using namespace vor;

namespace {

std::optional<u64> totalSize(const std::vector<std::string>& files) {
    u64 total = 0;
    for (const std::string& file : files) {
        std::error_code error;
        const auto type = file == "-" ? std::filesystem::file_type::fifo : std::filesystem::status(file, error).type();
        if (type == std::filesystem::file_type::regular) {
            const u64 size = std::filesystem::file_size(file, error);
            total += error ? 0 : size;
        } else if (type != std::filesystem::file_type::directory && type != std::filesystem::file_type::not_found) {
            return std::nullopt;
        }
    }
    return total;
}

// A longer line would wrap, and the wrapped part could not be erased.
std::size_t terminalWidth() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : 80U;
}

std::string secondsText(u64 seconds) {
    if (seconds < 120)
        return std::to_string(seconds) + " s";
    return seconds < 7200 ? std::to_string(seconds / 60) + " min" : std::to_string(seconds / 3600) + " h";
}

} // namespace

std::string sizeText(u64 bytes) {
    if (bytes < 1000)
        return std::to_string(bytes) + " bytes";
    u64 unit = 1000;
    const char* names = "kMGTPE";
    for (; bytes / unit >= 1000; unit *= 1000)
        ++names;
    return std::to_string(bytes / unit) + '.' + std::to_string(bytes % unit / (unit / 10)) + ' ' + *names + 'B';
}

static bool isWanted(bool isQuiet) { return !isQuiet && ::isatty(STDERR_FILENO) == 1; }

Progress::Progress(const std::vector<std::string>& files, bool isQuiet)
    : activity_("Reading"), isShown_(isWanted(isQuiet)) {
    if (isShown_)
        total_ = totalSize(files);
}

Progress::Progress(const char* activity, bool isQuiet) : activity_(activity), isShown_(isWanted(isQuiet)) {
    startTimer();
}

Progress::~Progress() {
    timer_ = {};
    if (isShown_)
        showStatus("");
}

void Progress::startTimer() {
    if (!isShown_)
        return;
    isTimed_ = true;
    try {
        timer_ = std::jthread([this](const std::stop_token& stop) { runTimer(stop); });
    } catch (const std::system_error&) {
        // Without a thread, the line is still updated when progress is reported.
    }
}

// noexcept: a failure to show progress must not end the operation.
void Progress::runTimer(const std::stop_token& stop) noexcept try {
    std::unique_lock lock(mutex_);
    std::condition_variable_any never;
    while (!stop.stop_requested()) {
        const Clock::time_point due = nextUpdate_;
        (void)never.wait_until(lock, stop, due, [] { return false; });
        if (!stop.stop_requested())
            showIfDue();
    }
} catch (const std::bad_alloc&) {
    // The line stays as it is.
}

void Progress::advance(u64 bytes) {
    if (!isShown_)
        return;
    const std::lock_guard lock(mutex_);
    read_ += bytes;
    showIfDue();
}

void Progress::showIfDue() {
    const Clock::time_point now = Clock::now();
    if (now < nextUpdate_)
        return;
    nextUpdate_ = now + std::chrono::milliseconds(100);
    showStatus(
        line(std::chrono::duration_cast<std::chrono::milliseconds>(now - begin_)).substr(0, terminalWidth() - 1));
}

void Progress::skip(u64 bytes) {
    const std::lock_guard lock(mutex_);
    if (total_)
        *total_ -= std::min(bytes, *total_);
}

std::string Progress::line(std::chrono::milliseconds elapsed) const {
    const double seconds = static_cast<double>(elapsed.count()) / 1000;
    const std::string soFar = secondsText(static_cast<u64>(seconds)) + " so far";
    if (isTimed_ && total_.value_or(0) == 0)
        return activity_ + ": " + soFar;
    // No progress was reported yet, or everything is read and being processed.
    if (isTimed_ && total_ && (read_ == 0 || read_ == *total_))
        return activity_ + ": " + sizeText(*total_) + ", " + soFar;
    const double speed = static_cast<double>(read_) / seconds;
    const std::string speedText = sizeText(static_cast<u64>(speed)) + "/s";
    if (!total_ || *total_ < read_) // a file may have grown
        return activity_ + ": " + sizeText(read_) + ", " + speedText;
    const double left = static_cast<double>(*total_ - read_) / speed;
    return activity_ + ": " + sizeText(read_) + " of " + sizeText(*total_) + ", " + speedText + ", " +
           secondsText(static_cast<u64>(std::ceil(left))) + " left";
}

} // namespace vrn::cli

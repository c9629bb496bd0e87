// Standard output and standard error of the command.
#pragma once

#include "scene/core/String.h"

#include <string_view>

namespace vrn::cli {

// The exit status of the command is the worst of all its files.
enum ExitStatus : int {
    exitOk = 0,     // all files were read, no error was logged
    exitErrors = 1, // an error was logged or a parse failed
    exitTrouble = 2 // invalid arguments, or a file that cannot be opened, read or written
};
inline constexpr const char* exitStatuses =
    "0 no errors, 1 errors were found, 2 invalid arguments or a file that cannot be\n"
    "opened, read or written (the remaining files are still processed).\n";
inline constexpr const char* programPurpose = "Check, format, show, compare and convert scenes in the VRN text format.";

// Any thread may print; the text of one call is not interleaved with others.
void print(std::string_view text);
void printError(std::string_view text);

// Writes `vrn: NAME: REASON` to standard error, or returns that line.
void complain(const vor::String& name, const vor::String& reason);
[[nodiscard]] vor::String complaintText(const vor::String& name, const vor::String& reason);

// Shows a status line at the bottom of the terminal on standard error. Each call replaces the line; an empty line, or
// anything printed, removes it. The line must not contain a line feed.
void showStatus(std::string_view line);

// Removes the status line that a child process may have left when it crashed.
void clearAbandonedStatus();

// Flushes standard output. Returns false, and reports why, if anything could not be written.
[[nodiscard]] bool finishOutput();

} // namespace vrn::cli

// Standard output and standard error of the command.
#pragma once

#include "scene/core/String.h"

#include <string_view>

namespace vrn::cli {

// What the command's exit status says; the worst of all files counts.
enum ExitStatus : int {
    exitOk = 0,     // all read, no error logged
    exitErrors = 1, // an error was logged or a parse failed
    exitTrouble = 2 // usage, or a file that cannot be opened, read or written
};
inline constexpr const char* exitStatuses =
    "0 all read without an error, 1 an error was found, 2 wrong usage or a\n"
    "file that cannot be opened or read (the other files are still dealt with).\n";
inline constexpr const char* programPurpose =
    "Checks, formats, shows, compares and converts scenes in the VRN text format.";

// Any thread may print; what is printed at once stays together.
void print(std::string_view text);
void printError(std::string_view text);

// Writes `vrn: NAME: REASON` to standard error; or gives that line.
void complain(const vor::String& name, const vor::String& reason);
[[nodiscard]] vor::String complaintText(const vor::String& name, const vor::String& reason);

// A line at the bottom of the terminal that standard error is: each call rewrites it, an empty one takes it away,
// and so does whatever is printed next. No line feed may be in it.
void showStatus(std::string_view line);

// Takes away the line that another process, which has come to a sudden end, may have left on the terminal.
void clearAbandonedStatus();

// Flushes standard output; false, with a complaint, if anything could not be written.
[[nodiscard]] bool finishOutput();

// "1 error", "2 errors".
[[nodiscard]] vor::String counted(unsigned long long count, const char* noun);

} // namespace vrn::cli

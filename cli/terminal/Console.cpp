#include "cli/terminal/Console.h"

#include "scene/core/TextEncoding.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <unistd.h>

namespace vrn::cli {

using vor::String;

static std::mutex consoleMutex; // guards both streams and the variables below
static int writeErrno = 0;
static bool hasStatus = false;

// Writes everything in one call to avoid flicker.
static void replaceStatus(std::string_view line) {
    std::string text(hasStatus ? "\r\x1B[K" : "");
    text += line;
    std::fwrite(text.data(), 1, text.size(), stderr);
    hasStatus = !line.empty();
}

static void put(std::string_view text, std::FILE* stream) {
    if (text.empty())
        return;
    const std::lock_guard lock(consoleMutex);
    replaceStatus("");
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stream) != text.size() && stream == stdout && writeErrno == 0)
        writeErrno = errno;
}

void print(std::string_view text) { put(text, stdout); }

void printError(std::string_view text) { put(text, stderr); }

String complaintText(const String& name, const String& reason) {
    return String::format("vrn: %s: %s\n", vor::escapeForTerminal(name).buf(), vor::escapeForTerminal(reason).buf());
}

void complain(const String& name, const String& reason) { printError(complaintText(name, reason).view()); }

void showStatus(std::string_view line) {
    const std::lock_guard lock(consoleMutex);
    replaceStatus(line);
}

void clearAbandonedStatus() {
    const std::lock_guard lock(consoleMutex);
    hasStatus = ::isatty(STDERR_FILENO) == 1;
    replaceStatus("");
}

static bool flushOutput() {
    const std::lock_guard lock(consoleMutex);
    errno = 0;
    if (std::fflush(stdout) != 0 && writeErrno == 0)
        writeErrno = errno;
    return writeErrno == 0 && !std::ferror(stdout);
}

bool finishOutput() {
    if (flushOutput())
        return true;
    complain("standard output", strerrordesc_np(writeErrno));
    return false;
}

} // namespace vrn::cli

#include "cli/Console.h"

#include "scene/core/TextEncoding.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace vrn::cli {

using vor::String;

static int writeErrno = 0;

static void put(std::string_view text, std::FILE* stream) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stream) != text.size() && stream == stdout && writeErrno == 0)
        writeErrno = errno;
}

void print(std::string_view text) { put(text, stdout); }

void printError(std::string_view text) { put(text, stderr); }

void complain(const String& name, const String& reason) {
    printError(
        String::format("vrn: %s: %s\n", vor::escapeForTerminal(name).buf(), vor::escapeForTerminal(reason).buf()));
}

bool finishOutput() {
    errno = 0;
    if (std::fflush(stdout) != 0 && writeErrno == 0)
        writeErrno = errno;
    if (writeErrno == 0 && !std::ferror(stdout))
        return true;
    complain("standard output", strerrordesc_np(writeErrno));
    return false;
}

String counted(unsigned long long count, const char* noun) {
    return String::format("%llu %s%s", count, noun, count == 1 ? "" : "s");
}

} // namespace vrn::cli

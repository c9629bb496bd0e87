#include "scene/core/Log.h"

#include "scene/core/TextEncoding.h"

#include <cstdio>

namespace vor {

namespace {

thread_local ScopedLogSink* currentSink = nullptr;

void writeToStderr(const LogRecord& record) {
    const char* severity = record.severity == LogSeverity::Error ? "error" : "warning";
    std::fprintf(stderr, "%s: %s\n", severity, escapeForTerminal(record.text).buf());
}

} // namespace

ScopedLogSink::ScopedLogSink(LogSink sink, Notices notices)
    : sink_(std::move(sink)), notices_(notices), outer_(currentSink) {
    currentSink = this;
}

ScopedLogSink::~ScopedLogSink() { currentSink = outer_; }

bool wantsNotices() noexcept { return currentSink && currentSink->notices_ == Notices::Yes; }

void writeLog(const LogRecord& record) {
    if (record.severity == LogSeverity::Notice && !wantsNotices())
        return;
    if (currentSink)
        currentSink->sink_(record);
    else
        writeToStderr(record);
}

// A macro, because va_start must be used in each variadic function itself.
#define VRN_LOG(severity, position)                                                                                    \
    va_list arguments;                                                                                                 \
    va_start(arguments, format);                                                                                       \
    const String text = String::formatv(format, arguments);                                                            \
    va_end(arguments);                                                                                                 \
    writeLog({severity, text, position, format})

void logError(const char* format, ...) { VRN_LOG(LogSeverity::Error, TextPosition()); }
void logWarning(const char* format, ...) { VRN_LOG(LogSeverity::Warning, TextPosition()); }
void logError(TextPosition position, const char* format, ...) { VRN_LOG(LogSeverity::Error, position); }
void logWarning(TextPosition position, const char* format, ...) { VRN_LOG(LogSeverity::Warning, position); }
void logNotice(TextPosition position, const char* format, ...) {
    if (wantsNotices()) {
        VRN_LOG(LogSeverity::Notice, position);
    }
}

#undef VRN_LOG

} // namespace vor

// The log: where errors and warnings go.
//
//     std::vector<LogRecord> log;
//     ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
//     parseString(&scene, text);          // everything that it reports is now in `log`
//
// Without a sink of its own a thread writes `error: TEXT` and `warning: TEXT` lines to stderr, with
// control characters escaped. A ScopedLogSink takes over for the thread that made it until it is
// destroyed; sinks nest. What a sink throws passes through the call that logged.
#pragma once

#include "scene/core/String.h"

#include <functional>

namespace vor {

enum class LogSeverity { Error, Warning };

// A place in a text: 1-based, counted in bytes; (0,0) when unknown.
struct TextPosition {
    i32 line = 0;
    i32 column = 0;
    friend bool operator==(const TextPosition&, const TextPosition&) = default;
};

struct LogRecord {
    LogSeverity severity = LogSeverity::Error;
    String text;
    TextPosition position;
    friend bool operator==(const LogRecord&, const LogRecord&) = default;
};

using LogSink = std::function<void(const LogRecord&)>;

class ScopedLogSink {
public:
    explicit ScopedLogSink(LogSink sink);
    ~ScopedLogSink();
    ScopedLogSink(const ScopedLogSink&) = delete;
    ScopedLogSink& operator=(const ScopedLogSink&) = delete;

private:
    friend void writeLog(const LogRecord& record);
    LogSink sink_;
    ScopedLogSink* outer_;
};

// Hands a record to the sink of this thread.
void writeLog(const LogRecord& record);

// printf-style, with or without the place in the text that is spoken of.
void logError(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logError(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));
void logWarning(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace vor

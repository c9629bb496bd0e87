// The log: where errors and warnings go.
//
//     std::vector<LogRecord> log;
//     ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
//     parseString(&scene, text);          // everything that it reports is now in `log`
//
// Without a sink of its own a thread writes `error: TEXT` and `warning: TEXT` lines to stderr, with
// control characters escaped. A ScopedLogSink takes over for the thread that made it until it is
// destroyed; sinks nest. What a sink throws passes through the call that logged.
//
// Notices are no part of the log: they tell of what is taken without a word, though whoever wrote the text may
// have meant something else. Only a sink that asks for them gets them; without one they are not even made.
#pragma once

#include "scene/core/String.h"

#include <functional>

namespace vor {

enum class LogSeverity { Error, Warning, Notice };

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
    const char* format = nullptr; // one address for all records of a kind, if anything
    friend bool operator==(const LogRecord& a, const LogRecord& b) {
        return a.severity == b.severity && a.text == b.text && a.position == b.position;
    }
};

using LogSink = std::function<void(const LogRecord&)>;

enum class Notices { No, Yes };

class ScopedLogSink {
public:
    explicit ScopedLogSink(LogSink sink, Notices notices = Notices::No);
    ~ScopedLogSink();
    ScopedLogSink(const ScopedLogSink&) = delete;
    ScopedLogSink& operator=(const ScopedLogSink&) = delete;

private:
    friend void writeLog(const LogRecord& record);
    friend bool wantsNotices() noexcept;
    LogSink sink_;
    Notices notices_;
    ScopedLogSink* outer_;
};

// Whether the sink of this thread takes notices.
[[nodiscard]] bool wantsNotices() noexcept;

// Hands a record to the sink of this thread; a notice only if it is wanted.
void writeLog(const LogRecord& record);

// printf-style, with or without the place in the text that is spoken of.
void logError(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logError(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));
void logWarning(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));
void logNotice(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace vor

// The log: receives errors and warnings.
//
//     std::vector<LogRecord> log;
//     ScopedLogSink sink([&](const LogRecord& record) { log.push_back(record); });
//     parseString(&scene, text);          // `log` now contains everything it reported
//
// A ScopedLogSink receives the records of the thread that created it until it is destroyed; sinks nest. Without one, a
// thread writes `error: TEXT` and `warning: TEXT` lines to stderr, with control characters escaped. Exceptions thrown
// by a sink propagate through the call that logged.
//
// Notices report input that is accepted silently although its author may have meant something else. Only sinks that
// request them receive them; otherwise they are not even formatted.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <functional>

namespace vor {

enum class LogSeverity { Error, Warning, Notice };

// A position in a file: 1-based, in bytes; (0,0) if unknown.
struct TextPosition {
    i32 line = 0;
    i32 column = 0;
    friend bool operator==(const TextPosition&, const TextPosition&) = default;
};

struct LogRecord {
    LogSeverity severity = LogSeverity::Error;
    String text;
    TextPosition position;
    const char* format = nullptr; // identifies the kind of record by address; may be null
    friend bool operator==(const LogRecord& a, const LogRecord& b) {
        return a.severity == b.severity && a.text == b.text && a.position == b.position;
    }
};

using LogSink = std::function<void(const LogRecord&)>;

enum class Notices { No, Yes };

class VRN_API ScopedLogSink {
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

// Whether the current sink of this thread receives notices.
[[nodiscard]] VRN_API bool wantsNotices() noexcept;

// Passes a record to the current sink of this thread; drops notices that it did not request.
VRN_API void writeLog(const LogRecord& record);

// printf-style, with or without a position in the file.
VRN_API void logError(const char* format, ...) __attribute__((format(printf, 1, 2)));
VRN_API void logWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
VRN_API void logError(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));
VRN_API void logWarning(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));
VRN_API void logNotice(TextPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace vor

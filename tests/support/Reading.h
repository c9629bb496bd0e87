// Reads a text into a new scene and records its result, log and exception.
#pragma once

#include "impl/VrnParser.h"
#include "impl/lexer/StringLexer.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>
#include <vrn/vrn.h>

namespace vor {

// How GoogleTest prints values.
inline void PrintTo(const String& text, std::ostream* out) { *out << '"' << text.view() << '"'; }
inline void PrintTo(const LogRecord& record, std::ostream* out) {
    *out << (record.severity == LogSeverity::Error ? "error " : "warning ") << record.position.line << ','
         << record.position.column << ": " << record.text.view();
}

} // namespace vor

namespace vrn::test {

struct Reading {
    std::unique_ptr<Scene> scene = std::make_unique<Scene>();
    std::vector<LogRecord> log;
    std::optional<LogRecord> thrown;
    bool isOk = false;

    // Calls `parse` and records its result, log and exception.
    template <class Parse> void run(Parse parse) {
        const ScopedLogSink sink([this](const LogRecord& record) { log.push_back(record); });
        try {
            isOk = parse();
        } catch (const ReadError& error) {
            thrown = LogRecord{LogSeverity::Error, error.what(), error.position()};
        }
    }

    [[nodiscard]] Node& node(const char* name) const { return *scene->findNode(name); }

    // The input of a path such as `n.a.b[2]`, or null.
    [[nodiscard]] Input* input(const String& path) const;
    [[nodiscard]] const AttrData& value(const String& path) const { return input(path)->value(); }

    // One line per record, in the format of the golden files.
    [[nodiscard]] std::string logText() const;
    [[nodiscard]] std::string json() const;
};

[[nodiscard]] Reading readText(const String& text);
[[nodiscard]] Reading readText(const String& text, std::shared_ptr<const Catalogue> catalogue);

// Reads another text into the same scene; clears the log first.
void readMore(Reading& reading, const String& text);

[[nodiscard]] inline LogRecord error(i32 line, i32 column, const char* text) {
    return {LogSeverity::Error, text, {line, column}};
}
[[nodiscard]] inline LogRecord warning(i32 line, i32 column, const char* text) {
    return {LogSeverity::Warning, text, {line, column}};
}

using Log = std::vector<LogRecord>;

// A parser at the start of a text, to test single recognisers.
struct ParserOn {
    explicit ParserOn(const String& text) : lexer(text) {
        parser.scene = &scene;
        parser.lexer = &lexer;
        parser.prime();
    }
    VrnParser* operator->() { return &parser; }

    Scene scene;
    StringLexer lexer;
    VrnParser parser;
};

} // namespace vrn::test

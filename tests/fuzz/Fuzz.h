// Utilities of the fuzzers: bytes as the source of decisions, logs as text, and failing.
#pragma once

#include "impl/Messages.h"
#include "impl/Reader.h"
#include "scene/Scene.h"
#include "scene/core/Log.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// The fuzzing engine calls this with each input.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace vrn::fuzz {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

[[noreturn]] inline void fail(const std::string& what) {
    std::fprintf(stderr, "WRONG: %s\n", what.c_str());
    std::abort();
}

inline void require(bool condition, const char* what) {
    if (!condition)
        fail(what);
}

[[nodiscard]] inline std::string_view asText(const unsigned char* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Takes decisions from the front of an input; they are zero once it is exhausted.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool isEmpty() const noexcept { return bytes_.empty(); }
    [[nodiscard]] std::string_view rest() const noexcept { return bytes_; }

    u8 byte() noexcept {
        if (bytes_.empty())
            return 0;
        const u8 first = static_cast<u8>(bytes_.front());
        bytes_.remove_prefix(1);
        return first;
    }
    std::size_t below(std::size_t limit) noexcept {
        return limit <= 256 ? byte() % limit : (std::size_t(byte()) << 8 | byte()) % limit;
    }
    std::string_view text(std::size_t maxLength) noexcept {
        const std::string_view taken = bytes_.substr(0, below(maxLength + 1));
        bytes_.remove_prefix(taken.size());
        return taken;
    }

private:
    std::string_view bytes_;
};

// Keeps inputs fast: larger arrays and buffers are refused by the same code.
inline void limit(Scene& scene) { scene.setLimits({.maxArrayElements = 1000, .maxBufferBytes = 1 << 20}); }

[[nodiscard]] std::string jsonOf(const Scene& scene);

// Runs `work` and returns its log, notices, and result or exception, one line each.
template <class Work> std::string logOf(Work work) {
    std::string log;
    const auto add = [&](const char* kind, const String& text, TextPosition position) {
        log += std::string(kind) + " " + std::to_string(position.line) + "," + std::to_string(position.column) + " ";
        log += text.view();
        log += '\n';
    };
    const auto write = [&](const LogRecord& record) {
        constexpr const char* severities[] = {"error", "warning", "notice"};
        // Only a source with a window knows whether the text continues.
        if (record.text != messages::endedByByte)
            add(severities[static_cast<std::size_t>(record.severity)], record.text, record.position);
    };
    const ScopedLogSink sink(write, Notices::Yes);
    try {
        log += work() ? "read\n" : "not read\n";
    } catch (const ReadError& error) {
        add("thrown", error.what(), error.position());
    }
    return log;
}

// Fails if an invariant of the scene is violated.
void checkScene(const Scene& scene);

} // namespace vrn::fuzz

// What the fuzzers share: bytes as the source of their decisions, and the end when something is wrong.
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

// What the fuzzing engine calls with each text.
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

// Takes decisions from the front of an input; zeros once it is used up.
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
    std::size_t below(std::size_t most) noexcept {
        return most <= 256 ? byte() % most : (std::size_t(byte()) << 8 | byte()) % most;
    }
    std::string_view text(std::size_t most) noexcept {
        const std::string_view taken = bytes_.substr(0, below(most + 1));
        bytes_.remove_prefix(taken.size());
        return taken;
    }

private:
    std::string_view bytes_;
};

// Keeps a text from asking for more than a fuzzer has time for; what is larger is refused in the same ways.
inline void limit(Scene& scene) { scene.setLimits({.maxArrayElements = 1000, .maxBufferBytes = 1 << 20}); }

[[nodiscard]] std::string jsonOf(const Scene& scene);

// Runs `work` and returns what it logged, noticed or threw, a line each.
template <class Work> std::string logOf(Work work) {
    std::string log;
    const auto add = [&](const char* kind, const String& text, TextPosition position) {
        log += std::string(kind) + " " + std::to_string(position.line) + "," + std::to_string(position.column) + " ";
        log += text.view();
        log += '\n';
    };
    const auto write = [&](const LogRecord& record) {
        constexpr const char* severities[] = {"error", "warning", "notice"};
        // Only a source that shows what it has knows whether the text goes on behind its end.
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

// Ends the run if the scene is not as scenes are.
void checkScene(const Scene& scene);

} // namespace vrn::fuzz

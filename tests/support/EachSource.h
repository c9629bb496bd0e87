// Reads a text from every kind of source.
#pragma once

#include "impl/Messages.h"
#include "impl/VrnParser.h"
#include "tests/support/Sources.h"

#include <memory>
#include <span>

namespace vrn::test {

// Calls `use(name, read)` for each source; `read(scene)` parses the text. The first source reads byte by byte and is
// the reference for the others.
template <class Use> void withEachSource(const std::string& text, std::span<const std::size_t> blockSizes, Use use) {
    const String string{std::string_view(text)};
    use("byte by byte", [&](Scene& scene) {
        ReferenceLexer lexer(text);
        return VrnParser().parse(&scene, &lexer);
    });
    use("from a string", [&](Scene& scene) { return parseString(&scene, string); });
    use("from a string, by tokens", [&](Scene& scene) {
        VrnParser parser;
        parser.readsPlainStatements = false;
        return parser.parse(&scene, string);
    });
    use("from memory", [&](Scene& scene) { return parseVrn(&scene, File::fromMemory(string), true); });
    for (const std::size_t size : blockSizes)
        use("in blocks of " + std::to_string(size), [&](Scene& scene) {
            return parseVrn(&scene, File::fromSource(std::make_unique<Blocks>(text, size), size), true);
        });
}

// Sizes that end a block at every position of a token, and some that hold whole texts.
inline std::vector<std::size_t> allBlockSizes() {
    std::vector<std::size_t> sizes{100, 255, 1000, 100000};
    for (std::size_t size = 1; size <= 64; ++size)
        sizes.push_back(size);
    return sizes;
}

// Passes what a parse reports to `add`, in order: log records, notices too if wanted, then the result or the exception.
template <class AnyScene, class Read, class Add>
void reportAll(AnyScene& scene, Read read, Add add, Notices notices = Notices::Yes) {
    const auto addRecord = [&](const char* kind, const String& words, TextPosition position) {
        add(std::string(kind) + " " + std::to_string(position.line) + "," + std::to_string(position.column) + ": " +
            words.buf());
    };
    const auto write = [&](const LogRecord& record) {
        constexpr const char* severities[] = {"error", "warning", "notice"};
        // Only a source with a window knows whether the text continues.
        if (record.text != messages::endedByByte)
            addRecord(severities[static_cast<std::size_t>(record.severity)], record.text, record.position);
    };
    const ScopedLogSink sink(write, notices);
    try {
        add(read(scene) ? "read" : "not read");
    } catch (const ReadError& error) {
        addRecord("thrown", error.what(), error.position());
    }
}

} // namespace vrn::test

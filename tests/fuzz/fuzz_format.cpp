// Formatting any text that is not refused preserves its scene and, apart from positions, its log; formatting the result
// again changes nothing.
#include "impl/Formatter.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/SameScene.h"

#include <optional>

using namespace vrn::fuzz;

namespace {

std::optional<std::string> formatted(const String& text, u32 column) {
    std::string result;
    try {
        formatVrn(text, {.column = column}, [&](std::string_view piece) { result += piece; });
    } catch (const FormatError&) {
        return std::nullopt;
    }
    return result;
}

// A message without the digits of its position, as in `(12,3)`.
std::string withoutPlaces(std::string_view message) {
    std::string text;
    for (const char c : message) {
        const bool isPartOfPlace = text.ends_with('(') || text.ends_with(',');
        if (!(isPartOfPlace && c >= '0' && c <= '9'))
            text += c;
    }
    return text;
}

std::string read(Scene& scene, const String& text) {
    limit(scene);
    std::string log;
    const ScopedLogSink sink([&](const LogRecord& record) { log += withoutPlaces(record.text.view()) + "\n"; });
    try {
        log += parseString(&scene, text) ? "read" : "not read";
    } catch (const ReadError& error) {
        log += withoutPlaces(error.what());
    }
    return log;
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0)
        return 0;
    const u32 column = data[0] % 4 * 25U;
    const String text = asText(data + 1, size - 1);
    const std::optional<std::string> once = formatted(text, column);
    if (!once)
        return 0;
    const String onceText = std::string_view(*once);
    const std::optional<std::string> twice = formatted(onceText, column);
    if (!twice || *twice != *once)
        fail("different when formatted again:\n" + *once + "\nnow:\n" + twice.value_or("refused"));
    Scene before;
    Scene after;
    const std::string log = read(before, text);
    const std::string logAfter = read(after, onceText);
    if (log != logAfter)
        fail("different log: " + log + "\nnow: " + logAfter + "\n" + *once);
    if (const std::string found = vrn::test::firstDifference(before, after); !found.empty())
        fail(found + "\n" + *once);
    return 0;
}

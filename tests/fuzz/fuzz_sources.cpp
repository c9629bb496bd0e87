// The same bytes from memory, from a file in blocks of any size, and byte by byte: scene, log and result are equal.
#include "impl/VrnParser.h"
#include "impl/numbers/PlainBlocks.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/InstructionSets.h"
#include "tests/support/Sources.h"

#include <random>

using namespace vrn::fuzz;

namespace {

class RandomBlocks final : public ByteSource {
public:
    RandomBlocks(std::string_view text, unsigned seed) : text_(text), random_(seed), most_(1 + random_() % 100) {}
    std::size_t read(char* buffer, std::size_t capacity, String&) override {
        const std::size_t count = text_.copy(buffer, std::min<std::size_t>(capacity, 1 + random_() % most_));
        text_.remove_prefix(count);
        return count;
    }

private:
    std::string_view text_;
    std::minstd_rand random_;
    std::size_t most_;
};

struct Outcome {
    std::string log;
    std::string json;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

template <class Read> Outcome outcomeOf(Read read) {
    Scene scene;
    limit(scene);
    Outcome outcome;
    outcome.log = logOf([&] { return read(scene); });
    checkScene(scene);
    outcome.json = jsonOf(scene);
    return outcome;
}

void requireSame(const Outcome& expected, const Outcome& found, const char* source) {
    if (found != expected)
        fail(std::string(source) + "\n" + expected.log + "---\n" + found.log + "---\n" + expected.json + found.json);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0)
        return 0; // the lexer of an empty string sees its terminator
    // No statement is plain near the end of a text.
    const bool mayBePlain = size % 2 == 0;
    const std::string padded = std::string(asText(data, size)) + std::string(mayBePlain ? 70 : 0, ' ');
    const std::string_view text = padded;
    const unsigned seed = data[size / 2] + 256U * static_cast<unsigned>(size);

    limitInstructionSet(InstructionSet::Baseline);
    const Outcome plain = outcomeOf([&](Scene& scene) {
        vrn::test::ReferenceLexer lexer{std::string(text)};
        return VrnParser().parse(&scene, &lexer);
    });
    limitInstructionSet(vrn::test::instructionSets[seed % 4]);
    requireSame(plain, outcomeOf([&](Scene& scene) { return parseString(&scene, text); }), "from memory");
    requireSame(plain, outcomeOf([&](Scene& scene) {
                    const auto block = 1 + seed % 300;
                    return parseVrn(&scene, File::fromSource(std::make_unique<RandomBlocks>(text, seed), block), true);
                }),
                "from a file");
    return 0;
}

#include "impl/numbers/NumberFiller.h"

#include "impl/lexer/CharClass.h"
#include "impl/numbers/BlockMasks.h"
#include "scene/core/PlainNumber.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace vor::velmo_sdk::impl {

namespace {

bool isNumberCharacter(char c) noexcept { return isIn(c, numberChar); }

const char* skipSeparators(const char* at, const char* end) noexcept {
    while (at != end && !isNumberCharacter(*at))
        ++at;
    return at;
}

const char* skipNumber(const char* at, const char* end) noexcept {
    while (at != end && isNumberCharacter(*at))
        ++at;
    return at;
}

template <class Number> class Filler final : public NumberFiller {
public:
    Filler(std::span<std::byte> block, InstructionSet set)
        : NumberFiller(block), readBlocks_(blockReader<Number>(set)) {}

private:
    // How many characters go one number at a time after the block reader has stopped: few after it has read
    // something, more and more when it finds nothing that it can read.
    static constexpr std::size_t fewest = 64;
    static_assert(fewest >= blockMargin); // which the first ones of a text, as they go singly, give
    static constexpr std::size_t most = 4096;

    void readWhole(std::string_view text) override {
        const char* at = skipSeparators(text.data(), text.data() + text.size());
        const char* end = text.data() + text.size();
        std::size_t singly = fewest;
        while (at != end && room() > 0) {
            at = readSingly(at, at + std::min(singly, static_cast<std::size_t>(end - at)), end);
            if (!readBlocks_)
                continue;
            const BlockProgress progress = readBlocks_(at, end, next(), room() / sizeof(Number));
            advance(progress.numbers * sizeof(Number));
            clearSpill();
            singly = progress.numbers > 0 ? fewest : std::min(2 * singly, most);
            at = skipSeparators(progress.at, end);
        }
        if (at != end)
            tooMany({at, skipNumber(at, end)});
    }

    // Reads the numbers that begin before `until`; returns where the next one begins.
    const char* readSingly(const char* at, const char* until, const char* end) {
        while (at < until && room() > 0) {
            Number number = 0;
            const char* behind = takePlainNumber(at, end, number);
            if (behind && (behind == end || !isNumberCharacter(*behind))) {
                std::memcpy(next(), &number, sizeof number);
                advance(sizeof number);
            } else {
                behind = skipNumber(at, end);
                readOne({at, behind});
            }
            at = skipSeparators(behind, end);
        }
        return at;
    }

    void readOne(std::string_view text) {
        Number number = 0;
        if (String::parse(text, number))
            std::memcpy(next(), &number, sizeof number);
        else
            fail();
        advance(sizeof number);
    }

    // Behind what it has counted the block reader may have left anything.
    void clearSpill() noexcept { std::memset(next(), 0, std::min(room(), mostNumbers * sizeof(Number))); }

    BlockReader readBlocks_;
};

} // namespace

template <class Number>
std::unique_ptr<NumberFiller> NumberFiller::make(std::span<std::byte> block, InstructionSet set) {
    return std::make_unique<Filler<Number>>(block, set);
}

void NumberFiller::take(std::string_view characters) {
    if (excess_)
        return;
    const char* at = characters.data();
    const char* end = at + characters.size();
    if (!cut_.empty()) {
        const char* behind = skipNumber(at, end);
        cut_.append(at, behind);
        at = behind;
        if (at == end)
            return;
        readWhole(cut_);
        cut_.clear();
    }
    const char* last = end;
    while (last != at && isNumberCharacter(last[-1]))
        --last;
    if (!excess_)
        readWhole({at, last});
    if (!excess_)
        cut_.assign(last, end);
}

void NumberFiller::finish() {
    if (!excess_)
        readWhole(cut_);
}

#define VRN_INSTANTIATE(Number)                                                                                        \
    template std::unique_ptr<NumberFiller> NumberFiller::make<Number>(std::span<std::byte>, InstructionSet);
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

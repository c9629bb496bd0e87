#include "impl/numbers/NumberFiller.h"

#include "impl/numbers/BlockMasks.h"
#include "scene/core/PlainNumber.h"
#include "scene/syntax/CharClass.h"

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
    // How many characters are parsed number by number before the block reader is tried again: few after it made
    // progress, twice as many each time it made none.
    static constexpr std::size_t minScalarLength = 64;
    static constexpr std::size_t maxScalarLength = 4096;
    static_assert(minScalarLength >= blockMargin); // a block never starts at the first characters of a piece

    void readWhole(std::string_view text) override {
        const char* at = skipSeparators(text.data(), text.data() + text.size());
        const char* end = text.data() + text.size();
        std::size_t scalarLength = minScalarLength;
        while (at != end && remaining() > 0) {
            at = readOneByOne(at, at + std::min(scalarLength, static_cast<std::size_t>(end - at)), end);
            if (!readBlocks_)
                continue;
            const BlockProgress progress = readBlocks_(at, end, next(), remaining() / sizeof(Number));
            advance(progress.numbers * sizeof(Number));
            clearOverrun();
            scalarLength = progress.numbers > 0 ? minScalarLength : std::min(2 * scalarLength, maxScalarLength);
            at = skipSeparators(progress.at, end);
        }
        if (at != end)
            setExcess({at, skipNumber(at, end)});
    }

    // Parses the numbers that begin before `until`; returns where the next one begins.
    const char* readOneByOne(const char* at, const char* until, const char* end) {
        while (at < until && remaining() > 0) {
            Number number = 0;
            const char* numberEnd = takePlainNumber(at, end, number);
            if (numberEnd && (numberEnd == end || !isNumberCharacter(*numberEnd))) {
                std::memcpy(next(), &number, sizeof number);
                advance(sizeof number);
            } else {
                numberEnd = skipNumber(at, end);
                readOne({at, numberEnd});
            }
            at = skipSeparators(numberEnd, end);
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

    // The block reader may have overwritten elements after those that it counted.
    void clearOverrun() noexcept { std::memset(next(), 0, std::min(remaining(), maxBlockNumbers * sizeof(Number))); }

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
    if (!partial_.empty()) {
        const char* numberEnd = skipNumber(at, end);
        partial_.append(at, numberEnd);
        at = numberEnd;
        if (at == end)
            return;
        readWhole(partial_);
        partial_.clear();
    }
    const char* last = end;
    while (last != at && isNumberCharacter(last[-1]))
        --last;
    if (!excess_)
        readWhole({at, last});
    if (!excess_)
        partial_.assign(last, end);
}

void NumberFiller::finish() {
    if (!excess_)
        readWhole(partial_);
}

#define VRN_INSTANTIATE(Number)                                                                                        \
    template std::unique_ptr<NumberFiller> NumberFiller::make<Number>(std::span<std::byte>, InstructionSet);
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

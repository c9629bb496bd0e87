#include "impl/numbers/NumberFiller.h"

#include "impl/numbers/BlockMasks.h"
#include "scene/core/PlainNumber.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace vor::velmo_sdk::impl {

namespace {

const char* skipSeparators(const char* at, const char* end) noexcept {
    while (at != end && !isIn(*at, numberChar))
        ++at;
    return at;
}

// How many characters are parsed number by number before the block reader is tried again: few after it made progress,
// twice as many each time it made none.
constexpr std::size_t minScalarLength = 64;
constexpr std::size_t maxScalarLength = 4096;
static_assert(minScalarLength >= blockMargin); // a block never starts at the first characters of a piece

} // namespace

template <class Number> NumberFiller NumberFiller::make(std::span<std::byte> block, InstructionSet set) {
    return {block, &NumberFiller::readNumbers<Number>, blockReader<Number>(set)};
}

template <class Number> void NumberFiller::readNumbers(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* at = skipSeparators(text.data(), end);
    std::size_t scalarLength = minScalarLength;
    while (at != end && remaining() > 0) {
        at = readOneByOne<Number>(at, at + std::min(scalarLength, static_cast<std::size_t>(end - at)), end);
        if (!readBlocks_)
            continue;
        const BlockProgress progress = readBlocks_(at, end, next(), remaining() / sizeof(Number));
        filled_ += progress.numbers * sizeof(Number);
        // The block reader may have overwritten elements after those that it counted.
        std::memset(next(), 0, std::min(remaining(), maxBlockNumbers * sizeof(Number)));
        scalarLength = progress.numbers > 0 ? minScalarLength : std::min(2 * scalarLength, maxScalarLength);
        at = skipSeparators(progress.at, end);
    }
    if (at != end && !excess_)
        excess_ = String(std::string_view(at, numberEnd(at, end)));
}

// Parses the numbers that begin before `until`; returns where the next one begins.
template <class Number> const char* NumberFiller::readOneByOne(const char* at, const char* until, const char* end) {
    while (at < until && remaining() > 0) {
        Number number = 0;
        const char* after = takePlainNumber(at, end, number);
        bool isNumber = after && (after == end || !isIn(*after, numberChar));
        if (!isNumber) {
            after = numberEnd(at, end);
            isNumber = String::parse({at, after}, number);
        }
        if (isNumber)
            std::memcpy(next(), &number, sizeof number);
        else
            isRead_ = false;
        filled_ += sizeof number;
        at = skipSeparators(after, end);
    }
    return at;
}

void NumberFiller::take(std::string_view characters) {
    const char* at = characters.data();
    const char* const end = at + characters.size();
    if (!partial_.empty()) {
        const char* const after = numberEnd(at, end);
        partial_.append(at, after);
        at = after;
        if (at == end)
            return;
        (this->*readWhole_)(partial_);
    }
    const char* partial = end;
    while (partial != at && isIn(partial[-1], numberChar))
        --partial;
    (this->*readWhole_)({at, partial});
    partial_.assign(partial, end);
}

void NumberFiller::finish() { (this->*readWhole_)(partial_); }

#define VRN_INSTANTIATE(Number) template NumberFiller NumberFiller::make<Number>(std::span<std::byte>, InstructionSet);
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

// Each parser of numbers, and each way of reading many, against slow and simple ones.
#include "impl/lexer/CharClass.h"
#include "impl/numbers/NumberFiller.h"
#include "scene/core/PlainNumber.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/SlowNumbers.h"

#include <cmath>
#include <cstring>

using namespace vrn::fuzz;

namespace {

// Bit for bit, but for what a NaN carries.
template <class Number> bool isSame(Number a, Number b) {
    if constexpr (std::is_floating_point_v<Number>)
        if (std::isnan(a) && std::isnan(b))
            return true;
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class Number> void checkOne(std::string_view text) {
    const std::optional<Number> expected = slow::number<Number>(std::string(text));
    Number found = 55;
    const bool isRead = String::parse(text, found);
    if (isRead != expected.has_value() || !isSame(found, expected.value_or(55)))
        fail("'" + std::string(text) + "' in " + __PRETTY_FUNCTION__);

    Number plain = 55;
    const char* behind = takePlainNumber(text.data(), text.data() + text.size(), plain);
    if (behind) {
        const std::string taken(text.data(), behind);
        const std::optional<Number> whole = slow::number<Number>(taken);
        if (!whole || !isSame(plain, *whole))
            fail("'" + taken + "' taken in " + __PRETTY_FUNCTION__);
    }
}

std::vector<std::string> elementsOf(std::string_view list) {
    std::vector<std::string> elements(1);
    for (const char c : list) {
        if (isIn(c, numberChar))
            elements.back() += c;
        else if (!elements.back().empty())
            elements.emplace_back();
    }
    if (elements.back().empty())
        elements.pop_back();
    return elements;
}

// What stands in a list: number characters and separators, as the scanner lets through.
bool isListText(std::string_view text) {
    for (const char c : text)
        if (!isIn(c, numberChar | blankChar | listPunctuation))
            return false;
    return true;
}

template <class Number> void checkList(std::string_view list, std::size_t piece) {
    const std::vector<std::string> elements = elementsOf(list);
    for (const InstructionSet set : {InstructionSet::Baseline, InstructionSet::Avx2, InstructionSet::Avx512}) {
        if (set > instructionSet())
            break;
        std::vector<std::byte> block(elements.size() * sizeof(Number));
        const std::unique_ptr<NumberFiller> filler = NumberFiller::make<Number>(block, set);
        for (std::string_view rest = list; !rest.empty(); rest.remove_prefix(std::min(piece, rest.size())))
            filler->take(rest.substr(0, piece));
        filler->finish();
        require(filler->filledBytes() == block.size() && !filler->excess(), "all elements are there");
        bool isRead = true;
        for (std::size_t i = 0; i < elements.size(); ++i) {
            const std::optional<Number> expected = slow::number<Number>(elements[i]);
            Number found;
            std::memcpy(&found, block.data() + i * sizeof found, sizeof found);
            isRead = isRead && expected;
            if (!isSame(found, expected.value_or(0)))
                fail("element '" + elements[i] + "' in " + __PRETTY_FUNCTION__);
        }
        require(filler->isRead() == isRead, "a list is read if all of its elements are");
    }
}

template <class Number> void check(Bytes decisions, std::size_t piece) {
    const std::string_view text = decisions.rest();
    checkOne<Number>(text);
    if (!isListText(text))
        return;
    for (const std::string& element : elementsOf(text))
        checkOne<Number>(element);
    checkList<Number>(text, piece);
    // The first characters of a list go one number at a time, the others many.
    checkList<Number>(std::string(80, ' ') + std::string(text) + std::string(80, ' '), 1000);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Bytes decisions(asText(data, size));
    const u8 type = decisions.byte();
    const std::size_t piece = 1 + decisions.byte();
    using Check = void (*)(Bytes, std::size_t);
    static constexpr Check checks[] = {check<i8>,  check<u8>,  check<i16>, check<u16>,   check<i32>,
                                       check<u32>, check<i64>, check<u64>, check<float>, check<double>};
    checks[type % std::size(checks)](decisions, piece);
    return 0;
}

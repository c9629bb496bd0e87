// Compares each parser of numbers, and each block reader, with simple and slow ones.
#include "impl/numbers/NumberFiller.h"
#include "scene/core/NumberText.h"
#include "scene/core/PlainNumber.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/SlowNumbers.h"
#include "tests/support/InstructionSets.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace vrn::fuzz;

namespace {

// Bitwise equality, except that all NaNs are equal.
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
    const char* plainEnd = takePlainNumber(text.data(), text.data() + text.size(), plain);
    if (plainEnd) {
        const std::string taken(text.data(), plainEnd);
        const std::optional<Number> whole = slow::number<Number>(taken);
        if (!whole || !isSame(plain, *whole))
            fail("'" + taken + "' taken in " + __PRETTY_FUNCTION__);
    }
}

std::vector<std::string> elementsOf(std::string_view list) {
    std::vector<std::string> elements(1);
    for (const char c : list) {
        if (slow::isNumberCharacter(c))
            elements.back() += c;
        else if (!elements.back().empty())
            elements.emplace_back();
    }
    if (elements.back().empty())
        elements.pop_back();
    return elements;
}

// Whether a text contains only characters that the lexer accepts in a list.
bool isListText(std::string_view text) {
    for (const char c : text)
        if (!slow::isNumberCharacter(c) && !slow::isSeparator(c))
            return false;
    return true;
}

// The block holds `more` numbers more than the list contains; `more` may be -1.
template <class Number> void checkList(std::string_view list, std::size_t piece, int more) {
    const std::vector<std::string> elements = elementsOf(list);
    const std::size_t capacity = more < 0 && elements.empty() ? 0 : elements.size() + static_cast<std::size_t>(more);
    const std::size_t count = std::min(capacity, elements.size());
    for (const InstructionSet set : vrn::test::supportedSets()) {
        std::vector<std::byte> block(capacity * sizeof(Number));
        NumberFiller filler = NumberFiller::make<Number>(block, set);
        for (std::string_view rest = list; !rest.empty(); rest.remove_prefix(std::min(piece, rest.size())))
            filler.take(rest.substr(0, piece));
        filler.finish();
        require(filler.filledBytes() == count * sizeof(Number), "all elements that fit are stored");
        require(filler.excess().has_value() == (count < elements.size()), "the first that does not fit is reported");
        require(!filler.excess() || *filler.excess() == String(std::string_view(elements[count])), "verbatim");
        bool isRead = true;
        for (std::size_t i = 0; i < count; ++i) {
            const std::optional<Number> expected = slow::number<Number>(elements[i]);
            Number found;
            std::memcpy(&found, block.data() + i * sizeof found, sizeof found);
            isRead = isRead && expected;
            if (!isSame(found, expected.value_or(0)))
                fail("element '" + elements[i] + "' in " + __PRETTY_FUNCTION__);
        }
        require(filler.isRead() == isRead, "a list is read if all of its elements are");
        for (std::size_t i = count * sizeof(Number); i < block.size(); ++i)
            require(block[i] == std::byte(0), "the rest of the block is zero");
    }
}

// parseReals(): stores nothing if there are fewer than `count` reals; skips those that are invalid.
void checkReals(std::string_view text, std::size_t count) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c != ' ')
            parts.back() += c;
        else if (!parts.back().empty())
            parts.emplace_back();
    }
    if (parts.back().empty())
        parts.pop_back();
    double reals[mostReals + 1];
    std::ranges::fill(reals, 55.0);
    const bool isRead = parseReals(text, count, reals);
    bool all = parts.size() >= count;
    for (std::size_t i = 0; i <= mostReals; ++i) {
        const std::optional<double> expected =
            parts.size() >= count && i < count ? slow::real<double>(parts[i]) : std::optional<double>(55.0);
        all = all && expected.has_value();
        if (!isSame(reals[i], expected.value_or(55.0)))
            fail("real " + std::to_string(i) + " of '" + std::string(text) + "'");
    }
    require(isRead == all, "reals are read if all of them are");
}

void checkBool(std::string_view text) {
    const std::optional<bool> expected = slow::boolean(std::string(text));
    bool found = false;
    require(String::parse(text, found) == expected.has_value() && found == expected.value_or(false), "a boolean");
}

template <class Number> void check(Bytes decisions, std::size_t piece) {
    const std::string_view text = decisions.rest();
    checkOne<Number>(text);
    if (!isListText(text))
        return;
    for (const std::string& element : elementsOf(text))
        checkOne<Number>(element);
    const int more = static_cast<int>(piece % 3) - 1;
    checkList<Number>(text, piece, more);
    // With 80 blanks before and after the list, it is parsed in blocks instead of number by number.
    checkList<Number>(std::string(80, ' ') + std::string(text) + std::string(80, ' '), 1000, more);
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
    checkBool(decisions.rest());
    checkReals(decisions.rest(), 1 + piece % mostReals);
    return 0;
}

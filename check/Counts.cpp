#include "check/Counts.h"

#include "check/Texts.h"
#include "scene/BufferNumbers.h"

#include <algorithm>
#include <limits>
#include <set>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

static u64 elementsOf(const Input& input) {
    return input.type() == AttrType::Buffer ? input.value().count() : input.size();
}

static u64 numbersOf(const Input& input) { return input.value().count() * elementLayout(input.dataType()).components; }

// Negative numbers and NaN count as 0; the sum saturates.
static u64 sumOf(const Input& input) {
    double sum = 0;
    visitNumbers(input.value(), [&](const auto& numbers) {
        for (const auto number : numbers)
            sum += std::max(0.0, static_cast<double>(number));
    });
    constexpr auto max = static_cast<double>(std::numeric_limits<i64>::max());
    return sum < max ? static_cast<u64>(sum) : std::numeric_limits<u64>::max();
}

static u64 countBy(const CountTerm& term, const Input& input) {
    switch (term.of) {
    case CountTerm::Of::Numbers:
        return numbersOf(input);
    case CountTerm::Of::Sum:
        return sumOf(input);
    case CountTerm::Of::Elements:
        break;
    }
    return elementsOf(input);
}

namespace {

struct Alternative {
    const CountTerm* term;
    u64 count;
};

struct Alternatives {
    std::vector<Alternative> known;
    bool isAnyUnknown = false;
};

} // namespace

// The alternatives that have elements or, if none has, all.
static Alternatives alternativesOf(const Declared& declared) {
    Alternatives all;
    for (const CountTerm& term : declared.type.countOf) {
        const Input* other = follow(declared.input, term.path);
        all.isAnyUnknown = all.isAnyUnknown || (other && other->linkedNode());
        all.known.push_back({&term, other ? countBy(term, *other) * term.factor : 0});
    }
    const auto isEmpty = [](const Alternative& each) { return each.count == 0; };
    if (!std::ranges::all_of(all.known, isEmpty))
        std::erase_if(all.known, isEmpty);
    return all;
}

static bool isIndexed(const Declared& declared) {
    return std::ranges::any_of(declared.siblings, [&](const InputType& sibling) {
        return std::ranges::any_of(sibling.indexes, [&](const String& path) {
            const Input* parent = declared.input.parent();
            const Input* indices = parent ? parent->input(sibling.name) : declared.input.node()->input(sibling.name);
            return indices && hasContents(*indices) && follow(*indices, path) == &declared.input;
        });
    });
}

void checkCount(const Declared& declared, Findings& findings) {
    const auto& [input, type, siblings] = declared;
    const u64 count = elementsOf(input);
    if (type.countOf.empty() || count == 0 || isIndexed(declared))
        return;
    const Alternatives alternatives = alternativesOf(declared);
    if (alternatives.isAnyUnknown ||
        std::ranges::find(alternatives.known, count, &Alternative::count) != alternatives.known.end())
        return;
    std::vector<std::string> expected;
    std::set<u64> counts;
    for (const Alternative& each : alternatives.known)
        if (counts.insert(each.count).second)
            expected.push_back(std::to_string(each.count) + " (" + std::string(each.term->text.view()) + ')');
    findings.add(input, messages::badCount, pathText(input).c_str(), elementsText(count).c_str(),
                 eitherText(expected).c_str());
}

} // namespace vrn::check

#include "inspect/diff/DifferenceText.h"

#include "inspect/value/ValueJson.h"
#include "inspect/value/ValueText.h"
#include "scene/core/TextEncoding.h"

#include <array>
#include <cstring>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;

namespace {

const char* nameOf(Aspect aspect) {
    static constexpr std::array names = {"version", "time",  "comments",   "nodeOrder",  "node",
                                         "input",   "type",  "definition", "dataType",   "elementType",
                                         "count",   "value", "elements",   "connection", "reference"};
    static_assert(names.size() == static_cast<std::size_t>(Aspect::Reference) + 1);
    return names[static_cast<std::size_t>(aspect)];
}

std::string withoutMiddle(std::string_view path) {
    constexpr std::size_t maxLength = 1000;
    if (path.size() <= maxLength)
        return std::string(path);
    const std::size_t end = characterStart(path, path.size() - maxLength / 2);
    return truncated(path, maxLength / 2) + std::string(path.substr(end));
}

std::string arrow(const std::string& before, const std::string& after) { return before + " -> " + after; }

std::string arrow(const Difference& difference) {
    const auto label = [](const std::optional<std::string>& text) { return text ? escapedShort(*text) : "none"; };
    return arrow(label(difference.before), label(difference.after));
}

std::string quotedArrow(const Difference& difference) {
    const auto quoted = [](const std::optional<std::string>& text) { return text ? quotedShort(*text) : "none"; };
    return arrow(quoted(difference.before), quoted(difference.after));
}

std::string numbersText(const NumbersDifference& numbers, const char* noun) {
    std::string text = std::to_string(numbers.differing) + " of " + std::to_string(numbers.compared) + ' ' + noun;
    text += numbers.differing == 1 ? " differs, largest difference " : " differ, largest difference ";
    if (numbers.isSingle)
        appendNumber(text, static_cast<float>(numbers.largest));
    else
        appendNumber(text, numbers.largest);
    return text + " at " + std::to_string(numbers.largestAt) + ", first at " + std::to_string(numbers.first);
}

// Long strings are shown from shortly before the first byte that differs.
std::string stringsText(std::string_view before, std::string_view after) {
    if (before.size() <= shortLength && after.size() <= shortLength)
        return arrow(quotedShort(before), quotedShort(after));
    const auto differ = std::ranges::mismatch(before, after);
    const auto at = static_cast<std::size_t>(differ.in1 - before.begin());
    const std::size_t from = at < shortLength / 2 ? 0 : characterStart(before, at - shortLength / 3);
    const std::string dots = from == 0 ? "" : "...";
    return "from byte " + std::to_string(at) + ": " +
           arrow(quotedShort(dots + std::string(before.substr(from))),
                 quotedShort(dots + std::string(after.substr(from))));
}

std::string valuesText(const Difference& difference) {
    const Input& before = *difference.inputBefore;
    const Input& after = *difference.inputAfter;
    if (before.type() == AttrType::String)
        return stringsText(before.value().asString(), after.value().asString());
    if (difference.numbers && difference.numbers->compared > 4)
        return numbersText(*difference.numbers, "numbers");
    return arrow(valueText(before), valueText(after));
}

std::string headline(const Difference& difference, const Style& style) {
    const auto coloured = [&](char sign, const std::string& text) {
        const std::string line = sign + (' ' + text);
        switch (difference.change) {
        case Change::Added:
            return style.added(line);
        case Change::Removed:
            return style.removed(line);
        default:
            return style.changed(line);
        }
    };
    const char sign = difference.change == Change::Added ? '+' : difference.change == Change::Removed ? '-' : '~';
    switch (difference.aspect) {
    case Aspect::Version:
    case Aspect::Time:
    case Aspect::Comments:
        return coloured(sign, nameOf(difference.aspect));
    case Aspect::NodeOrder:
        return coloured(sign, "order of nodes");
    default:
        return coloured(sign, std::string(escapeForTerminal(withoutMiddle(difference.path)).view()));
    }
}

std::string detail(const Difference& difference, const Style& style) {
    switch (difference.aspect) {
    case Aspect::Version:
    case Aspect::Definition:
        return arrow(difference);
    case Aspect::Time:
        return quotedArrow(difference);
    case Aspect::Comments:
        return "from " + std::to_string(difference.index) + ": " + quotedArrow(difference);
    case Aspect::NodeOrder:
        return "first " + arrow(difference);
    case Aspect::Input:
        return describe(difference.inputBefore ? *difference.inputBefore : *difference.inputAfter, style);
    case Aspect::Type:
        return "type " + arrow(difference);
    case Aspect::DataType:
    case Aspect::ElementType:
        return "element type " + arrow(difference);
    case Aspect::Count:
        return arrow(difference) + " elements";
    case Aspect::Elements:
        return numbersText(*difference.numbers, "elements");
    case Aspect::Connection:
    case Aspect::Reference:
        return nameOf(difference.aspect) + (' ' + arrow(difference));
    default:
        return valuesText(difference);
    }
}

void writeOptional(JsonLine& json, const char* key, const std::optional<std::string>& text) {
    json.key(key);
    text ? json.text(*text) : json.null();
}

void writeNumbers(JsonLine& json, const NumbersDifference& numbers) {
    json.key("differing").integer(numbers.differing);
    json.key("compared").integer(numbers.compared);
    json.key("first").integer(numbers.first);
    json.key("largestAt").integer(numbers.largestAt);
    json.key("largest");
    numbers.isSingle ? json.real(static_cast<float>(numbers.largest)) : json.real(numbers.largest);
}

// The members that hold what was there before and what is there after.
void writeSides(JsonLine& json, const Difference& difference) {
    switch (difference.aspect) {
    case Aspect::Value:
        writeJsonValue(json.key("before"), *difference.inputBefore);
        return writeJsonValue(json.key("after"), *difference.inputAfter);
    case Aspect::Elements:
        return writeNumbers(json, *difference.numbers);
    case Aspect::Version:
    case Aspect::Count:
        json.key("before").decimal(*difference.before);
        return json.key("after").decimal(*difference.after);
    case Aspect::Comments:
        json.key("index").integer(difference.index);
        [[fallthrough]];
    default:
        writeOptional(json, "before", difference.before);
        writeOptional(json, "after", difference.after);
    }
}

} // namespace

std::string differenceLine(const Difference& difference, const Style& style) {
    const std::string line = headline(difference, style);
    if (difference.aspect == Aspect::Node)
        return line + " (" + style.type(typeText(*difference.node)) + ")\n";
    return line + ": " + detail(difference, style) + '\n';
}

std::string differenceJson(const Difference& difference) {
    static constexpr std::array changes = {"removed", "added", "changed"};
    std::string line;
    const TextSink sink = [&](std::string_view piece) { line += piece; };
    writeJsonLine(sink, [&](JsonLine& json) {
        json.object([&] {
            json.key("change").text(changes[static_cast<std::size_t>(difference.change)]);
            json.key("aspect").text(nameOf(difference.aspect));
            if (!difference.path.empty())
                json.key("path").text(withoutMiddle(difference.path));
            if (difference.change == Change::Changed)
                return writeSides(json, difference);
            const Input* input = difference.inputBefore ? difference.inputBefore : difference.inputAfter;
            json.key("type").text(difference.node ? typeText(*difference.node) : typeText(*input));
        });
    });
    return line;
}

} // namespace vrn::inspect

#include "convert/model/Inputs.h"

#include "convert/model/InputTypes.h"
#include "scene/BufferNumbers.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace vrn::convert {

namespace {

constexpr const char* notFinite = "numbers that are not finite";
constexpr const char* tooLarge = "numbers beyond the range of a float";
constexpr const char* wrongType = "values of the wrong type";
constexpr const char* digits = "digits beyond float precision";

const char* floatProblem(double number) { return std::isfinite(number) ? tooLarge : notFinite; }

std::optional<double> asNumber(const AttrData& value) {
    if (value.type() == AttrType::Real)
        return value.asReal();
    if (value.type() == AttrType::Int)
        return static_cast<double>(value.asInt());
    if (value.type() == AttrType::UInt)
        return static_cast<double>(value.asUInt());
    return {};
}

// Whether an integer has more digits than a double.
bool losesDigits(const AttrData& value) {
    constexpr double limit = 0x1p63;
    const double number = asNumber(value).value_or(0);
    if (value.type() == AttrType::Int)
        return number >= limit || static_cast<i64>(number) != value.asInt();
    return value.type() == AttrType::UInt && (number >= 2 * limit || static_cast<u64>(number) != value.asUInt());
}

bool isDefault(const Input& input) {
    const Catalogue* catalogue = input.node()->scene()->catalogue();
    const NodeType* type = catalogue && !input.parent() ? catalogue->find(input.node()->type()) : nullptr;
    if (!type)
        return false;
    return std::ranges::any_of(type->inputs(), [&](const InputType& known) {
        return known.name == input.key() && known.initialValue() == input.value();
    });
}

// Whether leaving out an input loses nothing.
bool isEmptyOrDefault(const Input& input) {
    if (input.connection() || input.nodeValue())
        return false;
    switch (valueKind(input.type())) {
    case ValueKind::Null:
    case ValueKind::Node:
        return true;
    case ValueKind::Array:
    case ValueKind::Object:
        return input.children().empty();
    case ValueKind::Buffer:
        return input.value().count() == 0;
    case ValueKind::String:
        return *input.value().asString() == '\0';
    case ValueKind::Bool: // nodes are visible by default, also without a catalogue
        if (input.key() == "visible" && input.value().asBool())
            return true;
        break;
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
    case ValueKind::Components:
        break;
    }
    return isDefault(input);
}

bool hasPrefix(const InputPatterns& patterns, const std::string& prefix) {
    const auto next = patterns.lower_bound(prefix);
    return next != patterns.end() && next->starts_with(prefix);
}

// What the exporters take an input for: nothing, or a value or list.
enum class Reading { None, Value, Object, Array };

Reading readingOf(const std::string& pattern, const InputPatterns& known) {
    return known.contains(pattern)            ? Reading::Value
           : hasPrefix(known, pattern + '.')  ? Reading::Object
           : hasPrefix(known, pattern + "[]") ? Reading::Array
                                              : Reading::None;
}

bool isListFor(const Input& input, Reading reading) {
    return (reading == Reading::Object && input.type() == AttrType::Object) ||
           (reading == Reading::Array && input.type() == AttrType::Array);
}

// Whether all are in [0, limit). Blocks of a fixed length are compared with vector instructions.
template <class T> bool areIndices(std::span<const T> numbers, u64 limit) {
    constexpr std::size_t block = 64;
    T least = 0;
    T greatest = 0;
    const auto take = [&](T number) {
        least = std::min(least, number);
        greatest = std::max(greatest, number);
    };
    for (; numbers.size() >= block; numbers = numbers.subspan(block))
        for (std::size_t i = 0; i < block; ++i)
            take(numbers[i]);
    std::ranges::for_each(numbers, take);
    return least == 0 && std::cmp_less(greatest, limit);
}

template <class T> std::optional<Values<u32>> convertIndices(std::span<const T> numbers, u64 limit) {
    if (!numbers.empty() && !areIndices(numbers, limit))
        return {};
    if constexpr (sizeof(T) == sizeof(u32))
        return Values<u32>(std::span(reinterpret_cast<const u32*>(numbers.data()), numbers.size()));
    else
        return Values<u32>(std::vector<u32>(numbers.begin(), numbers.end()));
}

// Whether the elements are colours, but not as red, green and blue.
bool areHues(DataType type) {
    return type == DataType::Hsvf || type == DataType::Hsvd || type == DataType::Hslf || type == DataType::Hsld;
}

// Whether the elements of an attribute are matrices although they have four components.
bool readMatrices(const Input& matrices, u32 components, Losses& losses) {
    const bool areMatrices = matrices.type() == AttrType::Bool && matrices.value().asBool();
    if (areMatrices && components != 4)
        losses.add("matrices in attributes without four components", matrices);
    return areMatrices && components == 4;
}

} // namespace

const Input* InputReader::find(std::string_view path) const {
    std::size_t dot = path.find('.');
    const Input* input = node_.input(path.substr(0, dot));
    while (input && dot != std::string_view::npos) {
        path.remove_prefix(dot + 1);
        dot = path.find('.');
        input = input->input(path.substr(0, dot));
    }
    return input;
}

double InputReader::number(std::string_view path, double fallback) const {
    const Input* input = find(path);
    if (!input)
        return fallback;
    const std::optional<double> number = asNumber(input->value());
    if (number && losesDigits(input->value()))
        losses_.add(digits, *input);
    if (number && fitsFloat(*number))
        return *number;
    if (number)
        losses_.add(floatProblem(*number), *input);
    return fallback;
}

double InputReader::clampedNumber(std::string_view path, double fallback, double min, double max) const {
    const double value = number(path, fallback);
    const double clamped = std::clamp(value, min, max);
    if (clamped != value)
        losses_.add("numbers out of range (clamped)", *find(path));
    return clamped;
}

double InputReader::unitNumber(std::string_view path, double fallback) const {
    const double value = number(path, fallback);
    const double clamped = std::clamp(value, 0.0, 1.0);
    if (clamped != value)
        losses_.add(outsideUnitInterval, *find(path));
    return clamped;
}

bool InputReader::boolean(std::string_view path, bool fallback) const {
    const Input* input = find(path);
    return input && input->type() == AttrType::Bool ? input->value().asBool() : fallback;
}

std::string InputReader::text(std::string_view path) const {
    const Input* input = find(path);
    return input && input->type() == AttrType::String ? input->value().asString() : "";
}

void InputReader::readNumbers(std::string_view path, std::span<double> numbers) const {
    const Input* input = find(path);
    if (!input)
        return;
    const std::span<const double> components = firstComponents(input->value(), numbers.size());
    if (const auto bad = std::ranges::find_if_not(components, fitsFloat); bad != components.end())
        return losses_.add(floatProblem(*bad), *input);
    std::ranges::copy(components, numbers.begin());
}

const Node* InputReader::node(std::string_view path) const { return linkedNode(find(path)); }

String displayName(const Node& node) {
    const Input* name = node.input("name");
    return name && *name->value().asString() ? String(name->value().asString()) : node.name();
}

Values<float> readFloats(const Input* input, u32 components, Losses& losses) {
    if (!input || input->value().count() == 0)
        return {};
    const ElementLayout layout = elementLayout(input->dataType());
    if (areHues(input->dataType())) {
        losses.add(wrongType, *input);
        return {};
    }
    if (layout.components == components && layout.componentType == DataType::Float)
        return Values<float>(input->value().elements<float>());
    if (layout.components != components || layout.componentType != DataType::Double) {
        losses.add(wrongType, *input);
        return {};
    }
    const std::span<const double> doubles = input->value().elements<double>();
    std::vector<float> floats(doubles.size());
    bool isExact = true;
    for (std::size_t i = 0; i < doubles.size(); ++i) {
        constexpr double floatLimit = static_cast<double>(std::numeric_limits<float>::max());
        constexpr float infinity = std::numeric_limits<float>::infinity();
        floats[i] = doubles[i] > floatLimit    ? infinity
                    : doubles[i] < -floatLimit ? -infinity
                                               : static_cast<float>(doubles[i]);
        isExact &= static_cast<double>(floats[i]) == doubles[i];
    }
    if (!isExact)
        losses.add(digits, *input);
    return Values<float>(std::move(floats));
}

std::optional<NamedValues> readNamedValues(const Input& object, Losses& losses) {
    const Input* name = object.input("name");
    const Input* values = object.input("values");
    NamedValues attribute;
    attribute.name = name ? name->value().asString() : "";
    const bool isNamed = attribute.name.starts_with('_') && attribute.name.size() > 1;
    attribute.components = values ? elementLayout(values->dataType()).components : 0;
    const bool fits = (attribute.components >= 1 && attribute.components <= 4) || attribute.components == 9 ||
                      attribute.components == 16;
    if (isNamed && fits)
        attribute.values = readFloats(values, attribute.components, losses);
    if (const Input* matrices = object.input("matrices"))
        attribute.areMatrices = readMatrices(*matrices, attribute.components, losses);
    if (!attribute.values.empty() && allFinite(attribute.values.span()))
        return attribute;
    losses.add(isNamed ? "attributes that are not finite floats" : "attributes whose name does not start with _",
               object);
    return {};
}

std::optional<Values<u32>> readIndices(const Input* input, u64 limit) {
    if (!input)
        return {};
    std::optional<Values<u32>> indices;
    visitNumbers(input->value(), [&]<class Number>(std::span<const Number> numbers) {
        if constexpr (std::is_integral_v<Number> && !std::is_same_v<Number, bool>)
            indices = convertIndices(numbers, limit);
    });
    return indices;
}

InputPatterns operator+(InputPatterns a, const InputPatterns& b) {
    a.insert(b.begin(), b.end());
    return a;
}

void addUnreadInputs(const Node& node, const InputPatterns& known, Losses& losses) {
    struct Pending {
        const Input* input;
        std::string pattern;
    };
    std::vector<Pending> pending;
    const auto push = [&](std::span<const Input* const> inputs, const std::string& prefix) {
        for (auto input = inputs.rbegin(); input != inputs.rend(); ++input)
            pending.push_back({*input, prefix + std::string((*input)->key().view())});
    };
    push(node.inputs(), "");
    // Terminates on any nesting: only inputs that are the prefix of a pattern are expanded.
    while (!pending.empty()) {
        const auto [input, pattern] = std::move(pending.back());
        pending.pop_back();
        const Reading reading = readingOf(pattern, known);
        if (reading == Reading::None) {
            if (!isEmptyOrDefault(*input))
                losses.add("input " + pattern + " of " + std::string(node.type().view()), *input);
            continue;
        }
        const bool isValue = reading == Reading::Value;
        const bool isList = isListFor(*input, reading);
        const bool isWrong = isValue ? hasWrongType(*input, pattern) : !isList && !hasNothing(*input);
        if (linkedNode(input) && !(isValue && takesLink(pattern)))
            losses.add("links in place of values", *input);
        else if (isWrong)
            losses.add(wrongType, *input);
        else if (isValue && losesComponents(*input, pattern))
            losses.add(furtherComponents, *input);
        if (isList)
            push(input->children(), pattern + (reading == Reading::Object ? "." : "[]"));
    }
}

} // namespace vrn::convert

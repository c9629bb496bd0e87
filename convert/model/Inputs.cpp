#include "convert/model/Inputs.h"

#include "scene/BufferNumbers.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace vrn::convert {

namespace {

constexpr const char* notFinite = "numbers that are not finite";
constexpr const char* tooLarge = "numbers beyond the range of a float";
constexpr const char* notOfType = "values of a type that does not fit";

const char* whyNoFloat(double number) { return std::isfinite(number) ? tooLarge : notFinite; }

std::optional<double> asNumber(const AttrData& value) {
    if (value.type() == AttrType::Real)
        return value.asReal();
    if (value.type() == AttrType::Int)
        return static_cast<double>(value.asInt());
    if (value.type() == AttrType::UInt)
        return static_cast<double>(value.asUInt());
    return {};
}

bool isDefault(const Input& input) {
    const Catalogue* catalogue = input.node()->scene().catalogue();
    const NodeType* type = catalogue && !input.parent() ? catalogue->find(input.node()->type()) : nullptr;
    if (!type)
        return false;
    return std::ranges::any_of(type->inputs(), [&](const InputType& known) {
        return known.name == input.key() && known.initialValue() == input.value();
    });
}

// Whether nothing is lost with an input.
bool saysNothing(const Input& input) {
    if (input.connection() || input.nodeValue())
        return false;
    switch (input.type()) {
    case AttrType::Null:
    case AttrType::Node:
        return true;
    case AttrType::Array:
    case AttrType::Object:
        return input.children().empty();
    case AttrType::Buffer:
        return input.value().count() == 0;
    case AttrType::String:
        return *input.value().asString() == '\0';
    case AttrType::Bool: // what a node is without being told so
        if (input.key() == "visible" && input.value().asBool())
            return true;
        break;
    case AttrType::Int:
    case AttrType::UInt:
    case AttrType::Real:
    case AttrType::Vec2:
    case AttrType::Vec3:
    case AttrType::Vec4:
    case AttrType::Pos2:
    case AttrType::Pos3:
    case AttrType::Quat:
    case AttrType::Rgba:
    case AttrType::Mat3:
    case AttrType::Mat4:
        break;
    }
    return isDefault(input);
}

bool isPrefix(const Patterns& patterns, const std::string& start) {
    const auto next = patterns.lower_bound(start);
    return next != patterns.end() && next->starts_with(start);
}

template <class T> std::optional<Values<u32>> convertIndices(std::span<const T> numbers, u64 limit) {
    for (const T number : numbers)
        if (std::cmp_less(number, 0) || std::cmp_greater_equal(number, limit))
            return {};
    if constexpr (sizeof(T) == sizeof(u32))
        return Values<u32>(std::span(reinterpret_cast<const u32*>(numbers.data()), numbers.size()));
    else
        return Values<u32>(std::vector<u32>(numbers.begin(), numbers.end()));
}

} // namespace

bool fitsFloat(double number) { return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max()); }

const Input* InputReader::find(std::string_view path) const {
    const std::size_t dot = path.find('.');
    const Input* input = node_.input(path.substr(0, dot));
    return input && dot != std::string_view::npos ? input->input(path.substr(dot + 1)) : input;
}

const Input* InputReader::findGiven(std::string_view path) const {
    const Input* input = find(path);
    return input && input->type() != AttrType::Null ? input : nullptr;
}

double InputReader::number(std::string_view path, double fallback) const {
    const Input* input = findGiven(path);
    if (!input)
        return fallback;
    const std::optional<double> number = asNumber(input->value());
    if (number && fitsFloat(*number))
        return *number;
    losses_.add(number ? whyNoFloat(*number) : notOfType, *input);
    return fallback;
}

double InputReader::within(std::string_view path, double fallback, double least, double most) const {
    const double given = number(path, fallback);
    const double kept = std::clamp(given, least, most);
    if (kept != given)
        losses_.add("numbers outside of their range", *find(path));
    return kept;
}

double InputReader::portion(std::string_view path, double fallback) const {
    const double given = number(path, fallback);
    const double portion = std::clamp(given, 0.0, 1.0);
    if (portion != given)
        losses_.add("numbers outside of 0 to 1", *find(path));
    return portion;
}

bool InputReader::flag(std::string_view path, bool fallback) const {
    const Input* input = findGiven(path);
    if (!input)
        return fallback;
    if (input->type() != AttrType::Bool) {
        losses_.add(notOfType, *input);
        return fallback;
    }
    return input->value().asBool();
}

std::string InputReader::text(std::string_view path) const {
    const Input* input = findGiven(path);
    if (!input)
        return {};
    if (input->type() != AttrType::String) {
        losses_.add(notOfType, *input);
        return {};
    }
    return std::string(input->value().asString());
}

void InputReader::readNumbers(std::string_view path, std::span<double> numbers) const {
    const Input* input = findGiven(path);
    if (!input)
        return;
    const std::span<const double> given = input->value().components();
    if (given.size() < numbers.size())
        return losses_.add(notOfType, *input);
    if (const auto odd = std::ranges::find_if_not(given, fitsFloat); odd != given.end())
        return losses_.add(whyNoFloat(*odd), *input);
    std::ranges::copy(given.first(numbers.size()), numbers.begin());
}

const Node* InputReader::node(std::string_view path) const { return linkedNode(find(path)); }

const Node* linkedNode(const Input* input) {
    if (!input)
        return nullptr;
    return input->connection() ? input->connection()->node() : input->nodeValue();
}

String displayName(const Node& node) {
    const Input* name = node.input("name");
    return name && *name->value().asString() ? String(name->value().asString()) : node.name();
}

Values<float> readFloats(const Input* input, u32 components, Losses& losses) {
    if (!input || input->value().count() == 0)
        return {};
    const ElementLayout layout = elementLayout(input->dataType());
    if (layout.components == components && layout.componentType == DataType::Float)
        return Values<float>(input->value().elements<float>());
    if (layout.components != components || layout.componentType != DataType::Double) {
        losses.add(notOfType, *input);
        return {};
    }
    const std::span<const double> doubles = input->value().elements<double>();
    std::vector<float> floats(doubles.size());
    bool isSame = true;
    for (std::size_t i = 0; i < doubles.size(); ++i) {
        constexpr double most = static_cast<double>(std::numeric_limits<float>::max());
        constexpr float infinity = std::numeric_limits<float>::infinity();
        floats[i] = doubles[i] > most ? infinity : doubles[i] < -most ? -infinity : static_cast<float>(doubles[i]);
        isSame &= static_cast<double>(floats[i]) == doubles[i];
    }
    if (!isSame)
        losses.add("digits beyond those of a float", *input);
    return Values<float>(std::move(floats));
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

void noteOthers(const Node& node, const Patterns& carried, Losses& losses) {
    struct Open {
        const Input* input;
        std::string pattern;
    };
    std::vector<Open> open;
    const auto push = [&](std::span<const Input* const> inputs, const std::string& start) {
        for (auto input = inputs.rbegin(); input != inputs.rend(); ++input)
            open.push_back({*input, start + std::string((*input)->key().view())});
    };
    push(node.inputs(), "");
    // A pattern says how deep this goes.
    while (!open.empty()) {
        const auto [input, pattern] = std::move(open.back());
        open.pop_back();
        if (carried.contains(pattern))
            continue;
        if (input->type() == AttrType::Object && isPrefix(carried, pattern + '.'))
            push(input->children(), pattern + '.');
        else if (input->type() == AttrType::Array && isPrefix(carried, pattern + "[]"))
            push(input->children(), pattern + "[]");
        else if (!saysNothing(*input))
            losses.add("input " + pattern + " of " + std::string(node.type().view()), *input);
    }
}

} // namespace vrn::convert

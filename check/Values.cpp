#include "check/Values.h"

#include "check/Texts.h"
#include "impl/TypeRules.h"
#include "scene/BufferNumbers.h"
#include "scene/core/SimilarNames.h"

#include <algorithm>
#include <optional>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

static bool fits(const Input& input, const InputType& type) {
    if (input.type() == AttrType::Null || type.type == AttrType::Null)
        return true; // no value yet, or any
    const Fit how = fit(input.type(), type.type);
    if (how != Fit::Same && how != Fit::Converted)
        return false;
    const bool isOtherBuffer =
        type.dataType != DataType::Null && input.dataType() != DataType::Null && input.dataType() != type.dataType;
    return input.type() != AttrType::Buffer || !isOtherBuffer;
}

// "Real" or, for a buffer whose elements have a type, "Vec3f Buffer".
static std::string typeText(AttrType type, DataType dataType) {
    const std::string name = attrTypeName(type);
    const bool isTypedBuffer = type == AttrType::Buffer && dataType != DataType::Null;
    return isTypedBuffer ? std::string(dataTypeName(dataType)) + ' ' + name : name;
}

void checkType(const Declared& declared, Findings& findings) {
    const auto& [input, type, siblings] = declared;
    if (!fits(input, type))
        findings.add(input, messages::wrongType, pathText(input).c_str(),
                     typeText(input.type(), input.dataType()).c_str(), typeText(type.type, type.dataType).c_str());
}

static bool isWithin(double number, const InputType& type) {
    return (!type.minimum || number >= *type.minimum) && (!type.maximum || number <= *type.maximum);
}

static std::string rangeText(const InputType& type) {
    if (!type.maximum)
        return "at least " + numberText(*type.minimum);
    if (!type.minimum)
        return "at most " + numberText(*type.maximum);
    return numberText(*type.minimum) + " to " + numberText(*type.maximum);
}

// The first number that is out of range, as text. NaN is in no range.
template <class Numbers> static std::optional<std::string> firstOutside(const Numbers& numbers, const InputType& type) {
    const auto outside =
        std::ranges::find_if(numbers, [&](auto number) { return !isWithin(static_cast<double>(number), type); });
    return outside == numbers.end() ? std::nullopt : std::optional(numberText(*outside));
}

static std::optional<std::string> firstOutside(const AttrData& value, const InputType& type) {
    switch (valueKind(value.type())) {
    case ValueKind::Int:
        return firstOutside(std::array{value.asInt()}, type);
    case ValueKind::UInt:
        return firstOutside(std::array{value.asUInt()}, type);
    case ValueKind::Real:
    case ValueKind::Components:
        return firstOutside(value.components(), type);
    case ValueKind::Buffer: {
        std::optional<std::string> found;
        visitNumbers(value, [&](const auto& numbers) { found = firstOutside(numbers, type); });
        return found;
    }
    case ValueKind::Null:
    case ValueKind::Bool:
    case ValueKind::String:
    case ValueKind::Node:
    case ValueKind::Array:
    case ValueKind::Object:
        break;
    }
    return std::nullopt;
}

// An initial value may be outside of what a file may set: it often means that there is none.
static bool isInitial(const Declared& declared, const Findings& findings) {
    return declared.input.value() == declared.type.initialValue() && !findings.isSet(declared.input);
}

void checkRange(const Declared& declared, Findings& findings) {
    const auto& [input, type, siblings] = declared;
    if ((!type.minimum && !type.maximum) || isInitial(declared, findings))
        return;
    if (const auto outside = firstOutside(input.value(), type))
        findings.add(input, messages::outOfRange, pathText(input).c_str(), outside->c_str(), rangeText(type).c_str());
}

static std::string choicesText(const StringVector& choices) {
    std::vector<std::string> texts;
    for (const String& choice : choices)
        if (!choice.isEmpty())
            texts.push_back('"' + std::string(choice.view()) + '"');
    return eitherText(texts);
}

void checkListed(const Declared& declared, Findings& findings) {
    const auto& [input, type, siblings] = declared;
    if (type.enumeration.isEmpty() || input.type() != AttrType::String || isInitial(declared, findings))
        return;
    const String text = input.value().asString();
    if (std::ranges::find(type.enumeration, text) != type.enumeration.end())
        return;
    SimilarNames similar(text);
    for (const String& choice : type.enumeration)
        similar.consider(choice);
    findings.add(input, messages::notListed, pathText(input).c_str(), shortened(text).c_str(),
                 choicesText(type.enumeration).c_str(), similar.question().c_str());
}

} // namespace vrn::check

#include "scene/CatalogueRules.h"

#include "scene/ExpectedJson.h"
#include "scene/InputPath.h"
#include "scene/core/NumberText.h"

#include <algorithm>
#include <cmath>

namespace vor::velmo_sdk::impl {

namespace {

using Kind = JsonValue::Kind;

bool mayHoldNumbers(AttrType type) {
    switch (valueKind(type)) {
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
    case ValueKind::Components:
    case ValueKind::Buffer:
    case ValueKind::Array:
        return true;
    case ValueKind::Null:
    case ValueKind::Bool:
    case ValueKind::String:
    case ValueKind::Node:
    case ValueKind::Object:
        break;
    }
    return false;
}

double limitOf(const JsonValue& member, const InputType& input) {
    if (!mayHoldNumbers(input.type))
        failAtKey(member,
                  inQuotes(member.key) + " belongs to inputs with numbers, not to a " + attrTypeName(input.type));
    const double limit = realOf(member);
    if (std::isnan(limit))
        failAt(member, "expected a number that is not nan");
    return limit;
}

void expectType(const JsonValue& member, const InputType& input, AttrType type, AttrType other) {
    if (input.type != type && input.type != other)
        failAtKey(member, inQuotes(member.key) + " belongs to inputs of type " + attrTypeName(type) +
                              (type == other ? std::string() : std::string(" or ") + attrTypeName(other)));
}

HierarchyRole roleOf(const JsonValue& member) {
    const String role = textOf(member, "\"parent\" or \"children\"");
    if (role != "parent" && role != "children")
        failAt(member, "expected \"parent\" or \"children\"");
    return role == "parent" ? HierarchyRole::Parent : HierarchyRole::Children;
}

// One text, or an array of them.
StringVector oneOrMore(const JsonValue& value) {
    if (value.kind == Kind::String)
        return {textOf(value, "a string")};
    return textsOf(value, "a string or an array of strings");
}

// Takes `name(` and the `)` at the end off the text.
bool takeFunction(std::string_view& text, std::string_view name) {
    if (!text.starts_with(name) || !text.substr(name.size()).starts_with('(') || !text.ends_with(')'))
        return false;
    text = text.substr(name.size() + 1, text.size() - name.size() - 2);
    return true;
}

// term ::= count ( '*' integer )?, where count ::= PATH | 'numbers(' PATH ')' | 'sum(' PATH ')'
CountTerm termOf(const JsonValue& at, const String& text) {
    CountTerm term{.path = "", .text = text};
    std::string_view rest = text;
    if (const std::size_t star = rest.find('*'); star != std::string_view::npos) {
        if (!parseInteger(rest.substr(star + 1), term.factor, String::Radix::Decimal) || term.factor == 0)
            failAt(at, "expected a positive integer after the * of " + inQuotes(text));
        rest = rest.substr(0, star);
    }
    if (takeFunction(rest, "numbers"))
        term.of = CountTerm::Of::Numbers;
    else if (takeFunction(rest, "sum"))
        term.of = CountTerm::Of::Sum;
    term.path = rest;
    return term;
}

std::vector<CountTerm> termsOf(const JsonValue& value) {
    std::vector<CountTerm> terms;
    for (const String& text : oneOrMore(value))
        terms.push_back(termOf(value, text));
    return terms;
}

const InputType* declaredIn(const std::vector<InputType>& inputs, std::string_view name) {
    const auto found = std::ranges::find(inputs, name, [](const InputType& input) { return input.name.view(); });
    return found == inputs.end() ? nullptr : &*found;
}

// Follows the paths of one node type.
class PathChecks {
public:
    explicit PathChecks(const NodeType& type) : type_(type) {}

    // `value` describes the inputs, `own` are the steps to what contains them.
    void check(const JsonValue& value, const std::vector<InputType>& inputs,
               const std::vector<std::string_view>& own) const {
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            std::vector<std::string_view> steps = own;
            steps.push_back(inputs[i].name.view());
            if (inputs[i].type == AttrType::Array)
                steps.push_back(elementStep);
            checkInput(value.items[i], inputs[i], steps);
        }
    }

private:
    void checkInput(const JsonValue& value, const InputType& input, const std::vector<std::string_view>& own) const {
        for (const JsonValue& member : value.items) {
            if (member.key == "indexes")
                for (const String& path : input.indexes)
                    expectLeads(member, path, own);
            else if (member.key == "embeddedIn")
                for (const String& path : input.embeddedIn)
                    expectLeads(member, path, own);
            else if (member.key == "countOf")
                for (const CountTerm& term : input.countOf)
                    expectLeads(member, term.path, own);
            else if (member.key == "members")
                check(member, input.members, own);
        }
    }

    // A path enters only elements that contain the input which has the path.
    void expectLeads(const JsonValue& member, const String& path, const std::vector<std::string_view>& own) const {
        const auto steps = stepsOf(path);
        if (!steps)
            failAt(member, "malformed path " + inQuotes(path) + "; expected a path such as \"uvsets[].coords\"");
        const std::vector<InputType>* inputs = &type_.inputs();
        for (std::size_t i = 0; i < steps->size(); ++i) {
            if ((*steps)[i] == elementStep) {
                if (i >= own.size() ||
                    !std::equal(steps->begin(), steps->begin() + static_cast<std::ptrdiff_t>(i) + 1, own.begin()))
                    failAt(member, inQuotes(path) + " enters an array that does not contain the input");
                continue;
            }
            const InputType* input = declaredIn(*inputs, (*steps)[i]);
            if (!input)
                failAt(member, inQuotes(path) + " leads to no input; type " + inQuotes(type_.name()) + " declares no " +
                                   inQuotes((*steps)[i]) + " there");
            inputs = &input->members;
        }
    }

    const NodeType& type_;
};

} // namespace

bool readRule(const JsonValue& member, InputType& input) {
    if (member.key == "optional") {
        input.isOptional = flagOf(member);
    } else if (member.key == "accepts") {
        input.accepts = oneOrMore(member);
    } else if (member.key == "min") {
        input.minimum = limitOf(member, input);
    } else if (member.key == "max") {
        input.maximum = limitOf(member, input);
    } else if (member.key == "indexes") {
        expectType(member, input, AttrType::Buffer, AttrType::Buffer);
        input.indexes = oneOrMore(member);
    } else if (member.key == "countOf") {
        expectType(member, input, AttrType::Buffer, AttrType::Array);
        input.countOf = termsOf(member);
    } else if (member.key == "file") {
        expectType(member, input, AttrType::String, AttrType::Array);
        input.isFile = flagOf(member);
    } else if (member.key == "embeddedIn") {
        input.embeddedIn = oneOrMore(member);
    } else if (member.key == "hierarchy") {
        input.hierarchy = roleOf(member);
    } else {
        return false;
    }
    return true;
}

void expectConsistentRules(const JsonValue& value, const InputType& input) {
    if (input.minimum && input.maximum && *input.minimum > *input.maximum)
        failAt(value, "expected a \"min\" that does not exceed the \"max\" of input " + inQuotes(value.key));
    if (!input.embeddedIn.isEmpty() && !input.isFile)
        failAt(value,
               "\"embeddedIn\" belongs to inputs with \"file\": true, which input " + inQuotes(value.key) + " is not");
    const bool isOfObjects =
        input.type == AttrType::Object || (input.type == AttrType::Array && input.elementType == AttrType::Object);
    if (!input.members.empty() && !isOfObjects)
        failAt(value, "\"members\" belongs to an Object or an Array of Objects, which input " + inQuotes(value.key) +
                          " is not");
}

void expectPathsToLead(const JsonValue& inputs, const NodeType& type) {
    PathChecks(type).check(inputs, type.inputs(), {});
}

} // namespace vor::velmo_sdk::impl

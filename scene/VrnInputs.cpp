#include "scene/VrnInputs.h"

#include "scene/VrnBuffer.h"
#include "scene/VrnLosses.h"
#include "scene/VrnValue.h"
#include "scene/syntax/Identifier.h"

#include <algorithm>
#include <optional>

namespace vor::velmo_sdk::impl {

namespace {

constexpr std::size_t indent = 4;

// Inputs of these types are created by links.
bool isMadeByLink(const Input& input) noexcept {
    return input.type() == AttrType::Null || input.type() == AttrType::Node;
}

bool isUntypedBuffer(const Input& input) noexcept {
    return input.type() == AttrType::Buffer && input.dataType() == DataType::Null;
}

// Whether assigning the value of an element sets the element type of its array.
bool givesType(const Input& element) noexcept {
    return element.type() != AttrType::Buffer || hasKeyword(element.dataType());
}

bool takesNoValue(const Input& input) noexcept {
    return !isMadeByLink(input) && (input.isLocked() || input.isLinkOnly());
}

// An input with an enumeration may start with the empty string, but assigning that causes a warning.
bool isUnsetChoice(const Input& input) {
    return input.type() == AttrType::String && *input.value().asString() == '\0' && !input.enumeration().isEmpty();
}

// The type of a node in the scene's catalogue, or null.
const NodeType* nodeTypeOf(const Node& node) {
    const Catalogue* catalogue = node.scene()->catalogue();
    return catalogue ? catalogue->find(node.type().view()) : nullptr;
}

// The name of an input or output in a file; nothing if there is none.
std::optional<std::string> inputName(const Input& input) {
    const NodeType* type = nodeTypeOf(*input.node());
    return type ? type->inputNameInText(input.key()) : std::string(input.key().view());
}
std::optional<std::string> outputName(const Output& output) {
    const NodeType* type = nodeTypeOf(*output.node());
    return type ? type->outputNameInText(output.key()) : std::string(output.key().view());
}

// Whether the scene's catalogue creates the input with its current value.
bool isFromCatalogue(const Input& input) {
    const NodeType* type = input.parent() ? nullptr : nodeTypeOf(*input.node());
    return type && std::ranges::any_of(type->inputs(), [&](const InputType& made) {
               return made.name == input.key() && made.initialValue() == input.value();
           });
}

} // namespace

bool isWritable(const Node& node) { return isIdentifier(node.key().view()) && isIdentifier(node.type().view()); }

void VrnInputs::write(const Input& input, bool isThere) {
    path_.assign(indent, ' ');
    open_.clear();
    if (const char* reason = obstacle(input))
        return lose(input, reason);
    path_.append(".").append(*inputName(input));
    begin(input, isThere ? Before::Same : Before::Nothing);
    while (!open_.empty()) {
        if (open_.back().next == open_.back().end())
            open_.pop_back();
        else
            writeNextOf(open_.back());
    }
}

u64 VrnInputs::ArrayPlan::passOf(const Input& element) const noexcept {
    if (order == Order::ByIndex || isMadeByLink(element))
        return 0;
    return order == Order::EmptyArraysLast && element.size() == 0 ? 2 : 1;
}

void VrnInputs::writeNextOf(Open& parent) {
    const u64 size = parent.input->size();
    const u64 pass = parent.next / size;
    const Input& child = *parent.input->children()[parent.next++ % size];
    path_.resize(parent.pathLength);
    if (parent.input->type() != AttrType::Array)
        writeMember(child);
    else if (parent.plan.passOf(child) == pass)
        writeElement(child, ArrayPlan(parent.plan)); // a copy: opening the child may move `parent`
}

void VrnInputs::writeMember(const Input& member) {
    if (const char* reason = obstacle(member))
        return lose(member, reason);
    path_.append(".").append(*inputName(member));
    begin(member, Before::Nothing);
}

void VrnInputs::writeElement(const Input& element, const ArrayPlan& plan) {
    path_.append("[").append(std::to_string(element.index())).append("]");
    if (const char* loss = elementLoss(element, plan)) {
        lose(element, loss);
        return keepPlaceAndLink(element);
    }
    const bool isUntyped =
        plan.order == Order::LinksFirst && element.index() < plan.endOfLinks && !isMadeByLink(element);
    const bool isByPath = plan.order == Order::EmptyArraysLast && element.type() == AttrType::Array;
    begin(element, isUntyped ? Before::Untyped : isByPath ? Before::ByPath : Before::Nothing);
}

// Why a file cannot contain an input or member; null if it can.
const char* VrnInputs::obstacle(const Input& input) {
    if (!isIdentifier(input.key().view()))
        return losses::inputName;
    if (!inputName(input))
        return losses::olderName;
    if (input.type() == AttrType::Buffer && !isUntypedBuffer(input) && !hasKeyword(input.dataType()))
        return losses::noKeyword;
    const bool isLostBuffer = isUntypedBuffer(input) && !input.connection() && !isFromCatalogue(input);
    return isLostBuffer ? losses::untypedBuffer : nullptr;
}

// Why a file cannot set the value of an element, or leave it without a type; null if it can.
const char* VrnInputs::elementLoss(const Input& element, const ArrayPlan& plan) {
    if (isMadeByLink(element))
        return plan.isKept(element.index()) ? nullptr : losses::untypedElement;
    if (element.type() != AttrType::Buffer)
        return nullptr;
    if (!isUntypedBuffer(element))
        return hasKeyword(element.dataType()) ? nullptr : losses::noKeyword;
    // A buffer without an element type adopts that of any buffer that is written after it.
    return element.index() < plan.endOfTyped ? losses::untypedBuffer : nullptr;
}

// Creates an element whose value is lost, to keep its index and connection.
void VrnInputs::keepPlaceAndLink(const Input& element) {
    if (element.connection())
        writeConnection(element);
    else
        statement(" |= ", "null");
}

void VrnInputs::begin(const Input& input, Before before) {
    if (takesNoValue(input)) {
        if (!isFromCatalogue(input))
            lose(input, losses::markedInput);
        if (!input.children().empty())
            open_.push_back({.input = &input,
                             .pathLength = path_.size(),
                             .plan = input.type() == AttrType::Array ? planOf(input) : ArrayPlan()});
    } else if (!isUnsetChoice(input) || !isFromCatalogue(input)) {
        writeValue(input, before);
    }
    writeConnection(input);
}

void VrnInputs::writeValue(const Input& input, Before before) {
    switch (valueKind(input.type())) {
    case ValueKind::Null:
        if (!input.connection())
            statement(" |= ", "null");
        return;
    case ValueKind::Node:
        return writeReference(input);
    case ValueKind::Array:
        return beginArray(input, before);
    case ValueKind::Object:
        return beginObject(input, before);
    case ValueKind::Buffer:
        return writeBuffer(input);
    case ValueKind::Bool:
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
    case ValueKind::Components:
    case ValueKind::String:
        if (losesNaNBits(input.value()))
            lose(input, losses::nanBits);
        assign(input.value());
    }
}

// An object needs a statement only if it has no writable member: the statement of a member creates it.
void VrnInputs::beginObject(const Input& object, Before before) {
    const auto isWritten = [](const Input* member) { return !obstacle(*member); };
    if (before == Before::Untyped)
        createByPath(".x");
    if (before != Before::Nothing || std::ranges::none_of(object.children(), isWritten))
        assign(AttrData::zero(AttrType::Object));
    open_.push_back({.input = &object, .pathLength = path_.size()});
}

// Sets the type of an untyped element by a path through it. An assignment would be reported as a type error.
void VrnInputs::createByPath(const char* furtherPath) {
    const std::size_t length = path_.size();
    path_ += furtherPath;
    statement(" |= ", "null");
    path_.resize(length);
}

void VrnInputs::beginArray(const Input& array, Before before) {
    const ArrayPlan plan = planOf(array);
    const bool isTypeLost =
        array.elementType() == AttrType::Node || (plan.type == AttrType::Null && array.elementType() != AttrType::Null);
    if (isTypeLost)
        lose(array, losses::elementType);
    if (before != Before::Same && plan.endOfTyped == 0 && plan.type != AttrType::Null) {
        // An array that is cleared keeps its element type.
        path_ += "[0]";
        assign(plan.type == AttrType::Buffer ? AttrData::buffer(DataType::Float) : AttrData::zero(plan.type));
        path_.resize(path_.size() - 3);
        assign(AttrData::zero(AttrType::Array));
    } else if (before == Before::ByPath && array.size() == 0) {
        if (!array.connection())
            statement(" |= ", "null");
    } else if (before != Before::ByPath && (before != Before::Nothing || array.size() == 0)) {
        assign(AttrData::zero(AttrType::Array));
    }
    open_.push_back({.input = &array, .pathLength = path_.size(), .plan = plan});
}

VrnInputs::ArrayPlan VrnInputs::planOf(const Input& array) {
    const auto elements = array.children();
    ArrayPlan plan{.type = array.elementType() == AttrType::Node ? AttrType::Null : array.elementType(),
                   .firstTyped = elements.size()};
    for (u64 i = 0; i < elements.size(); ++i) {
        if (isMadeByLink(*elements[i])) {
            plan.endOfLinks = i + 1;
        } else if (givesType(*elements[i])) {
            plan.firstTyped = std::min(plan.firstTyped, i);
            plan.endOfTyped = i + 1;
        }
    }
    if (plan.endOfLinks == 0)
        return plan;
    // Setting the element type first would give it to the elements created by links.
    if (plan.endOfTyped == 0)
        plan.type = AttrType::Null;
    // A buffer sets the DataType of all elements without one, and `= []` turns them into arrays.
    const bool isArray = plan.type == AttrType::Array;
    plan.keepsLinks = plan.type != AttrType::Buffer && (!isArray || canCreateByPaths(array, plan.endOfLinks));
    if (plan.keepsLinks && isArray)
        plan.order = Order::EmptyArraysLast;
    else if (plan.type == AttrType::Object && plan.endOfLinks > plan.firstTyped)
        plan.order = Order::LinksFirst;
    return plan;
}

// Whether the arrays in an array need no `= []`. Each is created by the path of one of its elements or, if it is empty
// and has no element type, when the outer array grows after its element type is set.
bool VrnInputs::canCreateByPaths(const Input& array, u64 endOfLinks) {
    bool hasPaths = false;
    for (const Input* element : array.children()) {
        if (isMadeByLink(*element))
            continue;
        const bool hasPath =
            std::ranges::any_of(element->children(), [](const Input* e) { return isMadeByLink(*e) || givesType(*e); });
        const bool isByGrowth =
            element->size() == 0 && element->elementType() == AttrType::Null && element->index() >= endOfLinks;
        if (!hasPath && !isByGrowth)
            return false;
        hasPaths = hasPaths || hasPath;
    }
    return hasPaths;
}

void VrnInputs::writeBuffer(const Input& input) {
    const AttrData& buffer = input.value();
    if (isUntypedBuffer(input)) {
        // An element is created with the type of its array, so nothing is lost.
        if (!input.isElement() && !isFromCatalogue(input))
            lose(input, losses::untypedBuffer);
        if (!input.connection() && !isFromCatalogue(input))
            statement(" |= ", "null");
        return;
    }
    if (options_.hasElements && losesNaNBits(buffer))
        lose(input, losses::nanBits);
    text_.append(path_);
    text_.append(" = ");
    appendBuffer(buffer, options_, {.prefix = path_.size() + 3, .indent = indent}, text_);
    text_.append(";\n");
}

void VrnInputs::writeReference(const Input& input) {
    const Node* node = input.nodeValue();
    const bool isThere = node && isWritable(*node);
    if (node && !isThere)
        lose(input, losses::linkedName);
    statement(" = ", isThere ? node->key().view() : "null");
}

void VrnInputs::writeConnection(const Input& input) {
    const Output* output = input.connection();
    if (!output)
        return;
    const std::optional<std::string> name = outputName(*output);
    if (isWritable(*output->node()) && name && isOutputName(*name))
        return statement(" |= ", std::string(output->node()->key().view()) + "." + *name);
    lose(input, losses::linkedName);
    if (input.type() == AttrType::Null || input.isElement() || isUntypedBuffer(input))
        statement(" |= ", "null");
}

void VrnInputs::assign(const AttrData& value) {
    if (value.type() == AttrType::Buffer) {
        statement(" = ", "float[0] {}");
    } else {
        value_.clear();
        appendLiteral(value, value_);
        const bool isLong = options_.column != 0 && path_.size() + value_.size() + 4 > options_.column;
        if (!isLong || !value_.ends_with(')'))
            return statement(" = ", value_);
        text_.append(path_);
        text_.append(" = ");
        appendWrappedComponents(value, options_, {.prefix = path_.size() + 3, .indent = indent}, text_);
        text_.append(";\n");
    }
}

void VrnInputs::statement(std::string_view sign, std::string_view value) {
    text_.append(path_);
    text_.append(sign);
    text_.append(value);
    text_.append(";\n");
}

} // namespace vor::velmo_sdk::impl

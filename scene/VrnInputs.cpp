#include "scene/VrnInputs.h"

#include "scene/VrnBuffer.h"
#include "scene/VrnLosses.h"
#include "scene/VrnValue.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

namespace {

constexpr std::size_t indent = 4;

// Inputs of these types come to be by links.
bool isMadeByLink(const Input& input) noexcept {
    return input.type() == AttrType::Null || input.type() == AttrType::Node;
}

bool isUntypedBuffer(const Input& input) noexcept {
    return input.type() == AttrType::Buffer && input.dataType() == DataType::Null;
}

// Whether writing its value gives the array of an element that type.
bool givesType(const Input& element, AttrType type) noexcept {
    return element.type() == type && (type != AttrType::Buffer || hasKeyword(element.dataType()));
}

bool takesNoValue(const Input& input) noexcept {
    return !isMadeByLink(input) && (input.isLocked() || input.isLinkOnly());
}

// An input with an enumeration does not take the empty text quietly that it may have from the start.
bool isUnsetChoice(const Input& input) {
    return input.type() == AttrType::String && *input.value().asString() == '\0' && !input.enumeration().isEmpty();
}

// Whether the catalogue of the scene makes the input with the value that it has.
bool isFromCatalogue(const Input& input) {
    const Catalogue* catalogue = input.parent() ? nullptr : input.node()->scene().catalogue();
    const NodeType* type = catalogue ? catalogue->find(input.node()->type().view()) : nullptr;
    return type && std::ranges::any_of(type->inputs(), [&](const InputType& made) {
               return made.name == input.key() && made.initialValue() == input.value();
           });
}

// The name of an output may go on with indices. Each ends at its first closing bracket; what stands before it is not
// looked at, but of few characters.
bool isOutputName(std::string_view name) {
    const std::size_t brackets = std::min(name.find('['), name.size());
    if (!isIdentifier(name.substr(0, brackets)))
        return false;
    const auto canStandThere = [](char c) {
        return c == '[' || c == '*' || String::isDigit(c) ||
               (c != '\xFF' && (String::isSpace(c) || !String::isPrintable(c)));
    };
    for (name.remove_prefix(brackets); !name.empty(); name.remove_prefix(name.find(']') + 1)) {
        const std::string_view index = name.substr(0, name.find(']'));
        if (index.size() == name.size() || index[0] != '[' || !std::ranges::all_of(index, canStandThere))
            return false;
    }
    return true;
}

} // namespace

bool isWritable(const Node& node) { return isIdentifier(node.key().view()) && isIdentifier(node.type().view()); }

void VrnInputs::write(const Input& input, bool isThere) {
    if (const char* reason = obstacle(input, nullptr))
        return lose(input, reason);
    path_.assign(indent, ' ').append(".").append(input.key().view());
    begin(input, isThere ? Before::Same : Before::Nothing);
    while (!open_.empty()) {
        if (open_.back().next == open_.back().end())
            open_.pop_back();
        else
            writeNextOf(open_.back());
    }
}

void VrnInputs::writeNextOf(Open& parent) {
    const bool isArray = parent.input->type() == AttrType::Array;
    const u64 size = parent.input->size();
    const bool isForLinks = parent.next < parent.end() - size;
    const Input& child = *parent.input->children()[parent.next++ % size];
    if (parent.plan.endOfLinks != 0 && isMadeByLink(child) != isForLinks)
        return;
    if (const char* reason = obstacle(child, isArray ? &parent.plan : nullptr))
        return lose(child, reason);
    path_.resize(parent.pathLength);
    if (isArray)
        path_.append("[").append(std::to_string(child.index())).append("]");
    else
        path_.append(".").append(child.key().view());
    const bool isUnderLinks = child.index() < parent.plan.endOfLinks && !isMadeByLink(child);
    begin(child, isUnderLinks ? Before::Untyped : Before::Nothing);
}

// Why a text cannot have an input, or an element of an array, at all; null if it can.
const char* VrnInputs::obstacle(const Input& input, const ArrayPlan* array) {
    if (!array && !isIdentifier(input.key().view()))
        return losses::inputName;
    if (input.type() == AttrType::Buffer && !isUntypedBuffer(input) && !hasKeyword(input.dataType()))
        return losses::noKeyword;
    if (!array)
        return isUntypedBuffer(input) && !input.connection() ? losses::untypedBuffer : nullptr;
    if (isMadeByLink(input)) {
        // Once the array has a type, what is appended has it, too; among buffers all elements get it.
        const bool isEarly =
            (input.index() < array->firstTyped || array->endOfLinks != 0) && array->type != AttrType::Buffer;
        return array->type == AttrType::Null || isEarly ? nullptr : losses::untypedElement;
    }
    if (input.type() != array->type)
        return losses::otherElement;
    // A buffer gets the type of those that are written behind it.
    return isUntypedBuffer(input) && input.index() < array->endOfTyped ? losses::untypedBuffer : nullptr;
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
    switch (input.type()) {
    case AttrType::Null:
        if (!input.connection())
            statement(" |= ", "null");
        return;
    case AttrType::Node:
        return writeReference(input);
    case AttrType::Array:
        return beginArray(input, before);
    case AttrType::Object:
        return beginObject(input, before);
    case AttrType::Buffer:
        return writeBuffer(input);
    case AttrType::Bool:
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
    case AttrType::String:
        if (hasForeignNaN(input.value()))
            lose(input, losses::foreignNaN);
        assign(input.value());
    }
}

// An unobstructed member makes the object, for each writes something.
void VrnInputs::beginObject(const Input& object, Before before) {
    const auto isWritten = [](const Input* member) { return !obstacle(*member, nullptr); };
    if (before == Before::Untyped)
        makeByPath(".x");
    if (before != Before::Nothing || std::ranges::none_of(object.children(), isWritten))
        assign(AttrData::zero(AttrType::Object));
    open_.push_back({.input = &object, .pathLength = path_.size()});
}

// An element without a type becomes what a path that leads through it needs, and takes nothing else.
void VrnInputs::makeByPath(const char* furtherPath) {
    const std::size_t length = path_.size();
    path_ += furtherPath;
    statement(" |= ", "null");
    path_.resize(length);
}

// An array keeps the type of its elements when it is emptied.
void VrnInputs::beginArray(const Input& array, Before before) {
    const ArrayPlan plan = planOf(array);
    const bool isTypeGiven = plan.firstTyped < array.size();
    if (before != Before::Same && !isTypeGiven && plan.type != AttrType::Null) {
        path_ += "[0]";
        assign(plan.type == AttrType::Buffer ? AttrData::buffer(DataType::Float) : AttrData::zero(plan.type));
        path_.resize(path_.size() - 3);
        assign(AttrData::zero(AttrType::Array));
    } else if (before != Before::Nothing || array.size() == 0) {
        if (before == Before::Untyped)
            makeByPath("[0]");
        assign(AttrData::zero(AttrType::Array));
    }
    open_.push_back({.input = &array, .pathLength = path_.size(), .plan = plan});
}

VrnInputs::ArrayPlan VrnInputs::planOf(const Input& array) {
    const auto elements = array.children();
    ArrayPlan plan{.type = array.elementType()};
    if (plan.type == AttrType::Null || plan.type == AttrType::Node) {
        const auto typed = std::ranges::find_if_not(elements, [](const Input* e) { return isMadeByLink(*e); });
        if (plan.type == AttrType::Node || typed != elements.end())
            lose(array, losses::elementType);
        plan.type = typed == elements.end() ? AttrType::Null : (*typed)->type();
    }
    plan.firstTyped = elements.size();
    for (u64 i = elements.size(); i-- > 0;) {
        if (!givesType(*elements[i], plan.type))
            continue;
        plan.firstTyped = i;
        plan.endOfTyped = std::max(plan.endOfTyped, i + 1);
    }
    if (plan.type == AttrType::Object || plan.type == AttrType::Array) {
        const auto last =
            std::find_if(elements.rbegin(), elements.rend(), [](const Input* e) { return isMadeByLink(*e); });
        const auto end = static_cast<u64>(elements.rend() - last);
        plan.endOfLinks = end > plan.firstTyped ? end : 0;
    }
    // Elements that links make would be of the array's type, were it given beforehand.
    if (plan.endOfTyped == 0 && std::ranges::any_of(elements, [](const Input* e) { return isMadeByLink(*e); })) {
        if (plan.type != AttrType::Null)
            lose(array, losses::elementType);
        plan.type = AttrType::Null;
    }
    return plan;
}

void VrnInputs::writeBuffer(const Input& input) {
    const AttrData& buffer = input.value();
    if (isUntypedBuffer(input)) {
        // An element has been obstructed, or gets the array's type by coming to be.
        if (!input.isElement())
            lose(input, losses::untypedBuffer);
        if (!input.connection())
            statement(" |= ", "null");
        return;
    }
    if (hasForeignNaN(buffer))
        lose(input, losses::foreignNaN);
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
    if (isWritable(*output->node()) && isOutputName(output->key().view()))
        return statement(" |= ", output->label().view());
    lose(input, losses::linkedName);
    if (input.type() == AttrType::Null || isUntypedBuffer(input))
        statement(" |= ", "null");
}

void VrnInputs::assign(const AttrData& value) {
    if (value.type() == AttrType::Buffer) {
        statement(" = ", "float[0] {}");
    } else {
        value_.clear();
        appendLiteral(value, value_);
        statement(" = ", value_);
    }
}

void VrnInputs::statement(std::string_view sign, std::string_view value) {
    text_.append(path_);
    text_.append(sign);
    text_.append(value);
    text_.append(";\n");
}

} // namespace vor::velmo_sdk::impl

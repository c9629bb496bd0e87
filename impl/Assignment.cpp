#include "impl/Messages.h"
#include "impl/TypeRules.h"
#include "impl/VrnParser.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vor::velmo_sdk::impl {

// One name or index of a target path, with the type to create if nothing exists there.
struct VrnParser::Step {
    const Token& token;
    bool isLast;
    AttrType type;
    AttrType elementType; // of an Array

    [[nodiscard]] bool isIndex() const noexcept { return token.type == Token::Type::Brackets; }

    [[nodiscard]] AttrData emptyValue() const {
        return type == AttrType::Array ? AttrData::array(elementType) : AttrData::zero(type);
    }
};

/// assign ::= path ( connect | value )
bool VrnParser::parseAssign() {
    AssignInfo& info = assignment;
    info.clear();
    if (!path(info.path))
        return false;
    if (!connect(info) && !value(info))
        return false;
    Input* input = targetInput(info);
    if (sources)
        sources->set(input, info.path.last().position());
    info.input = input;
    if (info.isConnection)
        store(pendingConnections, input, linkTo(info.source));
    else if (info.isReference)
        store(pendingReferences, input, {.node = info.refToken.text, .position = info.refToken.position()});
    else
        apply(info, input);
    return true;
}

// `null` removes an earlier link on purpose; replacing it by any other link is worth a notice.
void VrnParser::store(PendingLinks& links, Input* input, PendingLink link) {
    const TextPosition position = link.position;
    const bool isNull = link.isNull();
    if (links.store(input, std::move(link)) && !isNull && wantsNotices())
        logNotice(position, messages::linkReplaced, quoted(input->label(), 200).buf());
}

Node* VrnParser::targetNode(const AssignInfo& info) {
    const Token& first = info.path[0];
    if (first.type == Token::Type::Dot) {
        if (!withNode)
            parseError(messages::withNodeNotSet, collapse(info.path).buf());
        return withNode;
    }
    Node* node = scene->findNode(first.text);
    if (!node)
        parseError(messages::nodeNotFound, collapse(info.path).buf());
    return node;
}

// The path for messages, with the node's name even if the text omits it.
String VrnParser::fullPath(const AssignInfo& info, Node* node) {
    const String path = collapse(info.path);
    return path.startsWith(".") ? node->name() + path : path;
}

// The type to create for a step follows from the next one: an object before a name, an array before an index, and the
// type of the value at the end of the path.
static AttrType typeBefore(const Token* next, AttrType valueType) noexcept {
    if (!next)
        return valueType;
    return next->type == Token::Type::Id ? AttrType::Object : AttrType::Array;
}

// The next name or index of a path after token `i`, or null; skips dots.
static const Token* nextName(const ds::Vector<Token>& path, std::size_t& i) noexcept {
    while (++i < path.size())
        if (path[i].type != Token::Type::Dot)
            return &path[i];
    return nullptr;
}

Input* VrnParser::targetInput(const AssignInfo& info) {
    Node* node = targetNode(info);
    std::size_t place = 0;
    const Token* name = nextName(info.path, place);
    if (!name)
        parseError(messages::inputNotFound, fullPath(info, node).buf());

    const AttrType valueType = info.data.type();
    const Token* next = nextName(info.path, place);
    Input* input = nullptr;
    while (name) {
        const Token* afterNext = nextName(info.path, place);
        const AttrType type = typeBefore(next, valueType);
        const bool hasElements = next && type == AttrType::Array;
        const Step step{*name, !next, type, hasElements ? typeBefore(afterNext, valueType) : AttrType::Null};
        input = step.isIndex() ? elementInput(input, step) : namedInput(node, input, step);
        if (!step.isLast)
            passThrough(input, step);
        name = std::exchange(next, afterNext);
    }
    return input;
}

// The input or member of a name, created if missing.
Input* VrnParser::namedInput(Node* node, Input* parent, const Step& step) {
    const String name = updateInputName(node->type(), step.token.text);
    const auto make = [&](auto* owner) {
        return step.type == AttrType::Array ? owner->createArray(name, step.elementType)
                                            : owner->createInput(name, step.type);
    };
    if (parent) {
        Input* member = parent->input(name);
        return member ? member : make(parent);
    }
    return node->hasInput(name, AttrType::Null) ? node->input(name) : make(node);
}

// The element at an index. In this order: parses the index, sets the element type of the array, grows the array.
Input* VrnParser::elementInput(Input* array, const Step& step) {
    const u64 index = elementIndex(array, step.token);
    setElementType(array, step);
    if (index >= array->size())
        growTo(array, index, step.token);
    return array->element(index);
}

/// index ::= '[' ( '*' | integer ) ']'   the index of an element; `*` appends an element
u64 VrnParser::elementIndex(const Input* array, const Token& brackets) {
    const String text = String(brackets.text).trimChars("[]");
    u64 index = array->size(); // NOLINT(clang-analyzer-core.CallAndMessage): a path begins with a name
    if (text != "*" && !String::parse(text, index))
        parseError(messages::invalidArrayIndex, text.buf());
    return index;
}

// How many elements a text may create implicitly, by assigning a later one; unlimited if a host's scene has no limit.
template <class Limits> static u64 maxImplicitElements(const Limits& limits) noexcept {
    if constexpr (requires { limits.maxImplicitElements; })
        return limits.maxImplicitElements;
    else
        return std::numeric_limits<u64>::max();
}

bool VrnParser::canGrow(const Input* array, u64 index) const {
    const u64 implicit = index - array->size();
    return index < scene->limits().maxArrayElements &&
           implicit <= maxImplicitElements(scene->limits()) - implicitElements;
}

// Appends elements until the index exists. Checks the limits first: an error leaves the array unchanged.
void VrnParser::growTo(Input* array, u64 index, const Token& brackets) {
    const auto refuse = [&] { parseError(messages::invalidArrayIndex, String(brackets.text).trimChars("[]").buf()); };
    if (!canGrow(array, index))
        refuse();
    implicitElements += index - array->size();
    while (array->size() <= index)
        if (!array->appendElement())
            refuse();
}

// All elements of an array have one type, which the first access by a path determines.
void VrnParser::setElementType(Input* array, const Step& step) {
    if (step.type == AttrType::Null || array->elementType() == step.type)
        return;
    if (array->elementType() != AttrType::Null)
        typeError(valueTypeName(step.type), array, false);
    array->set(AttrData::array(step.type));
}

// Checks that an input inside a path has the type that the next step requires; types it if it has none.
void VrnParser::passThrough(Input* input, const Step& step) {
    if (input->type() == step.type)
        return;
    if (input->type() == AttrType::Null)
        input->set(step.emptyValue());
    else if (step.type == AttrType::Array && input->type() != AttrType::Buffer)
        typeError(valueTypeName(step.elementType), input, true);
    else
        typeError(valueTypeName(step.type), input, false);
}

// Type-checks a value and writes it.
void VrnParser::apply(AssignInfo& info, Input* input) {
    if (refuses(input, info))
        return;
    const AttrType type = info.data.type();
    const Fit how = fit(type, input->type());
    if (how == Fit::Narrowed)
        narrowTypeWarning(valueTypeName(type), input);
    if (how == Fit::Rejected)
        wrongTypeWarning(valueTypeName(type), input);
    const bool isConverted = how == Fit::Converted || how == Fit::Narrowed;
    write(isConverted ? convert(info.data, input->type()) : std::move(info.data), input);
}

// Locked and link-only inputs accept no values; buffers accept only buffers of their element type.
bool VrnParser::refuses(Input* input, const AssignInfo& info) {
    const AttrData& data = info.data;
    if (input->isLocked() || input->isLinkOnly()) {
        wrongTypeWarning(info.valueString(), input);
        return true;
    }
    if (input->type() != AttrType::Buffer)
        return false;
    if (data.type() != AttrType::Buffer) {
        wrongTypeWarning(valueTypeName(data.type()), input);
        return true;
    }
    if (input->dataType() == DataType::Null || input->dataType() == data.dataType())
        return false;
    wrongTypeWarning(dataTypeName(data.dataType()), input);
    return true;
}

// Whether an element of an array of buffers or of arrays has no type, or no element type, yet.
static bool isUntyped(const Input* element, AttrType type) {
    if (element->type() != type)
        return element->type() == AttrType::Null;
    return type == AttrType::Buffer ? element->dataType() == DataType::Null : element->elementType() == AttrType::Null;
}

// The number of elements of type Null in an array of arrays; for a host that does not count them, all elements as an
// upper bound.
template <class AnyInput> static u64 nullElements(const AnyInput* array) {
    if constexpr (requires { array->nullElements(); })
        return array->nullElements();
    else
        return array->size();
}

// Upper bound for the number of elements that a value determines the type of. An array value without element type turns
// elements of type Null into arrays, but does not affect elements that are arrays already.
static u64 siblingsToType(const Input* array, const AttrData& data) {
    const AttrType type = array->elementType(); // Null for the members of an object
    if (type == AttrType::Buffer)
        return data.dataType() == DataType::Null ? 0 : array->untypedElements();
    if (type == AttrType::Array)
        return data.elementType() == AttrType::Null ? nullElements(array) : array->untypedElements();
    return 0;
}

// Sets the type of `data` for all untyped elements of an array of buffers or of arrays. Amortised linear over all
// writes to the array: untyped elements are at its end, because each write types those before it, or were created by
// links before the array had a type, and are typed once.
static void setTypeOfSiblings(Input* array, const AttrData& data) {
    const AttrType type = array->elementType();
    const auto toType = [&](const Input* element) {
        const bool isAnyUntyped = type == AttrType::Buffer || data.elementType() != AttrType::Null;
        return isAnyUntyped ? isUntyped(element, type) : element->type() == AttrType::Null;
    };
    u64 first = array->size();
    for (u64 left = siblingsToType(array, data); left > 0 && first > 0;)
        if (toType(array->element(--first)))
            --left;
    for (u64 i = first; i < array->size(); ++i)
        if (toType(array->element(i)))
            array->element(i)->set(type == AttrType::Buffer ? AttrData::buffer(data.dataType())
                                                            : AttrData::array(data.elementType()));
}

void VrnParser::write(AttrData data, Input* input) {
    if (Input* parent = input->parent())
        setTypeOfSiblings(parent, data);
    // The enumeration belongs to the input and stays valid while the value is moved into it.
    const StringVector* entries = data.type() == AttrType::String ? &input->enumeration() : nullptr;
    if (!entries || entries->isEmpty()) {
        input->assign(std::move(data));
        return;
    }
    const String text = data.asString();
    input->assign(std::move(data));
    const bool isWritten = input->type() == AttrType::String;
    if (isWritten && std::ranges::find(*entries, text) == entries->end())
        badEnumValueWarning(text, input);
}

} // namespace vor::velmo_sdk::impl

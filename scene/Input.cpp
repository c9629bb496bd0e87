#include "scene/Input.h"

#include "scene/InputExtras.h"
#include "scene/Node.h"
#include "scene/SceneStorage.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

Input::~Input() = default;

String Input::name() const { return isElement() ? String(u64(index_)) : name_; }

// No function here recurses, because a file can nest inputs to any depth.
String Input::label() const {
    std::vector<const Input*> path;
    for (const Input* input = this; input; input = input->parent_)
        path.push_back(input);
    std::string text;
    if (node_)
        text += node_->name().view();
    for (auto input = path.rbegin(); input != path.rend(); ++input) {
        const String name = (*input)->name();
        const bool isElement = (*input)->isElement();
        text += isElement ? "[" : ".";
        text += name.view();
        text += isElement ? "]" : "";
    }
    return std::string_view(text);
}

Node* Input::nodeValue() const noexcept { return extras_ ? extras_->reference().target() : nullptr; }

bool Input::assign(AttrData value) {
    if (!takes(value.type()))
        return false;
    if (type() == AttrType::Object)
        clearChildren();
    if (type() == AttrType::Node)
        setNode(nullptr);
    if (type() == AttrType::Array) {
        clearChildren();
        if (value.elementType() == AttrType::Null)
            return true;
    }
    write(std::move(value));
    return true;
}

bool Input::set(AttrData value) {
    if (type() != AttrType::Array || value.type() != AttrType::Array)
        return assign(std::move(value));
    if (elementType() != AttrType::Null || !mayBeArrayOf(value.elementType()))
        return value.elementType() == elementType();
    write(std::move(value));
    return true;
}

bool Input::resizeBuffer(u64 count) {
    if (dataType() == DataType::Null)
        return false;
    value_.resize(count);
    return true;
}

bool Input::takes(AttrType valueType) const noexcept {
    if (type() != AttrType::Null || valueType == AttrType::Null)
        return type() == valueType;
    const AttrType expected = isElement() ? parent_->elementType() : AttrType::Null;
    return expected == AttrType::Null || valueType == expected;
}

bool Input::mayBeArrayOf(AttrType expected) const noexcept {
    return std::ranges::all_of(children(), [expected](const Input* element) {
        const AttrType type = element->type();
        return type == AttrType::Null || type == AttrType::Node || type == expected;
    });
}

// Replaces the value. In the common case, a plain value of the same type, no count of an array changes.
void Input::write(AttrData value) {
    const bool isContainer = value.type() == AttrType::Buffer || value.type() == AttrType::Array;
    if (isElement() && (isContainer || value.type() != type()))
        writeElement(std::move(value));
    else
        value_ = std::move(value);
    if (isContainer)
        countUntyped();
}

// Updates the counts of the array that this is an element of.
void Input::writeElement(AttrData value) {
    Content& array = *parent_->content();
    array.untypedElements -= u32(isUntyped(parent_->elementType()));
    array.nullElements -= u32(type() == AttrType::Null);
    value_ = std::move(value);
    array.untypedElements += u32(isUntyped(parent_->elementType()));
    array.nullElements += u32(type() == AttrType::Null);
    parent_->typeArrayOf(*this);
}

// An array without an element type adopts the type of the first element that gets one. References do not count, because
// the reader resolves them after all values are set.
void Input::typeArrayOf(const Input& element) {
    if (elementType() == AttrType::Null && element.type() != AttrType::Null && element.type() != AttrType::Node)
        write(AttrData::array(element.type()));
}

void Input::setNode(interfaces::INode* node) {
    Node* target = static_cast<Node*>(node);
    if (!node_ || (target && !target->isAttached()))
        return;
    if (type() == AttrType::Null)
        write(AttrData::zero(AttrType::Node));
    if (type() != AttrType::Node)
        return;
    if (target)
        extras().reference().enter(*target, target->references_);
    else if (extras_)
        extras_->reference().leave();
}

std::span<Input* const> Input::children() noexcept {
    Content* const inner = content();
    return inner ? inner->children.items() : std::span<Input* const>();
}

std::span<const Input* const> Input::children() const noexcept { return const_cast<Input*>(this)->children(); }

Input* Input::element(u64 i) const noexcept {
    return type() == AttrType::Array && i < size() ? content()->children.items()[i] : nullptr;
}

Input* Input::input(const String& name) const noexcept {
    return type() == AttrType::Object && content() ? content()->children.find(name) : nullptr;
}

Input* Input::createInput(const String& name, AttrType type) { return addChild(name, AttrData::zero(type)); }

Input* Input::createArray(const String& name, AttrType elementType) {
    return addChild(name, AttrData::array(elementType));
}

Input* Input::addChild(const String& name, AttrData value) {
    if (type() != AttrType::Object || !node_)
        return nullptr;
    if (Input* existing = input(name))
        return existing;
    auto& members = newContent().children;
    std::unique_ptr<Input, void (*)(Input*)> member(new (node_->scene()->storage_->inputs)
                                                        Input(*node_, this, name, members.size(), std::move(value)),
                                                    [](Input* input) { input->release(); });
    members.push(member.get());
    return member.release();
}

Input* Input::appendElement() {
    if (type() != AttrType::Array || !node_ || size() >= node_->scene()->limits().maxArrayElements)
        return nullptr;
    Content& array = newContent();
    std::unique_ptr<Input, void (*)(Input*)> element(
        new (node_->scene()->storage_->inputs)
            Input(*node_, this, String(), array.children.size(), AttrData::zero(elementType())),
        [](Input* input) { input->release(); });
    array.children.pushUnnamed(element.get());
    array.untypedElements += u32(element->isUntyped(elementType()));
    array.nullElements += u32(element->type() == AttrType::Null);
    return element.release();
}

bool Input::removeInput(const String& name) {
    Input* member = input(name);
    if (!member)
        return false;
    content()->children.erase(member);
    removeFrom(children(), member);
    return true;
}

bool Input::removeElement(u64 i) {
    Input* removed = element(i);
    if (!removed)
        return false;
    Content& array = *content();
    array.untypedElements -= u32(removed->isUntyped(elementType()));
    array.nullElements -= u32(removed->type() == AttrType::Null);
    array.children.erase(removed);
    removeFrom(children(), removed);
    return true;
}

// Detaches an input that is no longer among its siblings.
void Input::removeFrom(std::span<Input* const> siblings, Input* removed) noexcept {
    for (Input* behind : siblings.subspan(removed->index_))
        --behind->index_;
    detach(removed);
}

u64 Input::untypedElements() const noexcept { return content() ? content()->untypedElements : 0; }

u64 Input::nullElements() const noexcept { return content() ? content()->nullElements : 0; }

bool Input::isUntyped(AttrType asElementOf) const noexcept {
    if (type() != AttrType::Null && type() != asElementOf)
        return false; // of another type, such as a reference set before the array had a type
    return (asElementOf == AttrType::Buffer && dataType() == DataType::Null) ||
           (asElementOf == AttrType::Array && elementType() == AttrType::Null);
}

void Input::countUntyped() noexcept {
    Content* const array = content();
    if (!array)
        return;
    array->untypedElements = 0;
    for (const Input* element : children())
        array->untypedElements += u32(element->isUntyped(elementType()));
}

Output* Input::connection() const noexcept { return extras_ ? extras_->connection().target() : nullptr; }

Node* Input::linkedNode() const noexcept {
    const Output* output = connection();
    return output ? output->node() : nodeValue();
}

void Input::connect(interfaces::IOutput* output) {
    if (!output)
        return disconnect();
    Output* source = static_cast<Output*>(output);
    if (!node_ || !source->isAttached())
        return;
    extras().connection().enter(*source, source->connections_);
}

void Input::disconnect() {
    if (extras_)
        extras_->connection().leave();
}

const StringVector& Input::enumeration() const noexcept {
    static const StringVector none;
    return content() && content()->enumeration ? *content()->enumeration : none;
}

void Input::setEnumeration(StringVector entries) {
    if (!node_)
        return;
    newContent().enumeration = std::make_shared<const StringVector>(std::move(entries));
}

void Input::release() {
    if (--references_ == 0)
        delete this;
}

Input::Extras& Input::extras() {
    if (!extras_)
        extras_.reset(new (node_->scene()->storage_->extras) Extras(this));
    return *extras_;
}

Input::Content* Input::content() const noexcept { return extras_ ? extras_->content.get() : nullptr; }

Input::Content& Input::newContent() {
    auto& content = extras().content;
    if (!content)
        content.reset(new (node_->scene()->storage_->contents) Content);
    return *content;
}

void Input::clearChildren() noexcept {
    Content* const container = content();
    if (!container)
        return;
    container->untypedElements = 0;
    container->nullElements = 0;
    while (Input* child = container->children.takeLast())
        detach(child);
}

// Detaches an input and everything below it from the scene. Each input loses its links and children, also if a
// reference keeps it alive. Allocates nothing: the traversal returns through the parent pointers.
void Input::detach(Input* root) noexcept {
    Input* input = root;
    while (input) {
        if (Input* child = input->content() ? input->content()->children.takeLast() : nullptr) {
            input = child;
            continue;
        }
        Input* above = input == root ? nullptr : input->parent_;
        input->node_ = nullptr;
        input->parent_ = nullptr;
        input->extras_.reset();
        input->release();
        input = above;
    }
}

// Copies `other` and everything below it to this new input, except for links.
void Input::copyFrom(const Input& other) {
    std::vector<std::pair<Input*, const Input*>> open{{this, &other}};
    while (!open.empty()) {
        const auto [to, from] = open.back();
        open.pop_back();
        to->write(from->value_);
        to->isLocked_ = from->isLocked_;
        to->isLinkOnly_ = from->isLinkOnly_;
        if (!from->content())
            continue;
        to->newContent().enumeration = from->content()->enumeration;
        for (const Input* child : from->children())
            if (Input* copy = child->isElement() ? to->appendElement() : to->addChild(child->name_, AttrData()))
                open.emplace_back(copy, child);
    }
}

} // namespace vor::velmo_sdk::impl

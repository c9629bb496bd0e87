// Input: a typed value of a node; with members if it is an object, with elements if it is an array.
//
//     Input* fov = node->input("fov");
//     if (fov && fov->type() == AttrType::Real)
//         use(fov->value().asReal());
//     for (const Input* uv : node->input("uvsets")->children())       // elements, or members
//         use(uv->input("coords")->value().elements<float>());        // the buffer itself, no copy
//
// An input has a name (an element: its index), a type, a value of that type, and may have a connection
// to an output, a list of the texts that it takes (an enumeration) and marks. Its type is settled once
// it is other than Null. It belongs to its node, moves never, and is found by name in O(1). Where a
// function takes a name that is there already, or an input that cannot have children, it says so. An
// input that is held beyond its node keeps its value, and takes neither links nor children any more.
#pragma once

#include "scene/AttrData.h"
#include "scene/Interfaces.h"
#include "scene/Link.h"
#include "scene/NamedList.h"
#include "scene/SlabPool.h"
#include "scene/core/Export.h"

#include <memory>

namespace vor::velmo_sdk::impl {

class Node;
class Output;

class VRN_API Input final : public interfaces::IInput, public Pooled {
public:
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    [[nodiscard]] String name() const;
    [[nodiscard]] const String& key() const noexcept { return name_; } // empty for an element
    [[nodiscard]] String label() const override;
    [[nodiscard]] Node* node() const noexcept { return node_; }      // null once it is taken out
    [[nodiscard]] Input* parent() const noexcept { return parent_; } // null at the top
    [[nodiscard]] bool isElement() const noexcept { return parent_ && parent_->type() == AttrType::Array; }
    [[nodiscard]] u64 index() const noexcept { return index_; } // among its siblings

    // The value. A Node's target, members and elements are not in it but in the functions below.
    [[nodiscard]] AttrType type() const noexcept { return value_.type(); }
    [[nodiscard]] String typeName() const override { return attrTypeName(type()); }
    [[nodiscard]] const AttrData& value() const noexcept { return value_; }
    [[nodiscard]] DataType dataType() const noexcept { return value_.dataType(); }
    [[nodiscard]] AttrType elementType() const noexcept { return value_.elementType(); }
    [[nodiscard]] Node* nodeValue() const noexcept;

    // A value of the input's type replaces the value; an Object empties the members, an Array the
    // elements (and an element type that it does not carry stays). A Null input takes value and type;
    // as an element, only its array's element type if there is one; otherwise its array takes the type. Any other value
    // leaves the input as it is.
    void assign(AttrData value);

    // The same, but an Array only gives an array that has no element type its own, and keeps the
    // elements; O(n) in them. It leaves the array as it is if one of them, other than a Node, has a type
    // that does not fit.
    void set(AttrData value);

    // Makes a Node input, or a Null input, which becomes one, refer to `node`; others ignore it.
    void setNode(interfaces::INode* node) override;

    // Members of an Object, elements of an Array, in order.
    [[nodiscard]] std::span<Input* const> children() noexcept;
    [[nodiscard]] std::span<const Input* const> children() const noexcept;
    [[nodiscard]] u64 size() const noexcept { return children().size(); }
    [[nodiscard]] Input* element(u64 i) const noexcept; // null at the size and beyond
    [[nodiscard]] Input* input(const String& name) const noexcept;

    // A new member of an Object, with the zero value of its type. The member of that name, unchanged, if
    // there is one; null if this is no Object.
    Input* createInput(const String& name, AttrType type);
    Input* createArray(const String& name, AttrType elementType);

    // A new element at the end of an Array, of its element type. Null if this is no Array, or if it
    // holds as many as the scene allows.
    Input* appendElement();

    // How many elements of an array of buffers may still be given a DataType, or of an array of arrays
    // an element type; 0 for all others. O(1).
    [[nodiscard]] u64 untypedElements() const noexcept;

    // How many elements of an array are of type Null. O(1).
    [[nodiscard]] u64 nullElements() const noexcept;

    // The connection. connect(null) is disconnect().
    [[nodiscard]] Output* connection() const noexcept;
    void connect(interfaces::IOutput* output) override;
    void disconnect() override;

    // The texts that a String input is meant to take; none means any.
    [[nodiscard]] const StringVector& enumeration() const noexcept;
    void setEnumeration(StringVector entries);

    // Locked: the reader leaves the value alone. Link-only: it takes links, never values.
    [[nodiscard]] bool isLocked() const noexcept { return isLocked_; }
    [[nodiscard]] bool isLinkOnly() const noexcept { return isLinkOnly_; }
    void setLocked(bool locked) noexcept { isLocked_ = locked; }
    void setLinkOnly(bool linkOnly) noexcept { isLinkOnly_ = linkOnly; }

    void retain() override { ++references_; }
    void release() override;
    [[nodiscard]] bool isAttached() const override { return node_ != nullptr; }

    // What a pool for what this may have besides needs to know.
    [[nodiscard]] static constexpr std::size_t extrasSize() noexcept;

private:
    friend class Node;
    friend class Output;

    // What most inputs have none of.
    struct Extras : Pooled {
        explicit Extras(Input* input) noexcept : connection(input), reference(input) {}

        NamedList<Input, 3> children;
        u32 untypedElements = 0;
        u32 nullElements = 0;
        Link connection; // in the list of `output`
        Output* output = nullptr;
        Link reference; // in the list of `node`
        Node* node = nullptr;
        std::shared_ptr<const StringVector> enumeration;
    };

    Input(Node& node, Input* parent, String name, u64 index, AttrData value);
    ~Input() override = default;

    Input* addChild(const String& name, AttrData value);
    void write(AttrData value);
    void writeElement(AttrData value);
    void clearChildren() noexcept;
    void copyFrom(const Input& other);
    [[nodiscard]] Extras& extras();
    [[nodiscard]] bool takes(AttrType valueType) const noexcept;
    [[nodiscard]] bool mayBeArrayOf(AttrType expected) const noexcept;
    [[nodiscard]] bool isUntyped(AttrType asElementOf) const noexcept;
    void countUntyped() noexcept;
    void typeArrayOf(const Input& element);
    static void detach(Input* root) noexcept;

    Node* node_;
    Input* parent_;
    String name_;
    AttrData value_;
    std::unique_ptr<Extras> extras_;
    u32 references_ = 1; // the scene's
    u32 index_ : 30;
    bool isLocked_ : 1 = false;
    bool isLinkOnly_ : 1 = false;
};

constexpr std::size_t Input::extrasSize() noexcept { return sizeof(Extras); }

} // namespace vor::velmo_sdk::impl

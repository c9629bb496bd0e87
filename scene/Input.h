// Input: a typed value of a node, with members if it is an object and elements if it is an array.
//
//     Input* fov = node->input("fov");
//     if (fov && fov->type() == AttrType::Real)
//         use(fov->value().asReal());
//     for (const Input* uv : node->input("uvsets")->children())       // elements, or members
//         use(uv->input("coords")->value().elements<float>());        // the buffer itself, no copy
//
// An input has a name (an element has an index), a type and a value of that type. It may have a connection to an
// output, an enumeration of valid strings, and marks (locked, link-only). A type other than Null never changes. The
// node owns its inputs; their addresses are stable, and lookup by name is O(1).
//
// retain() keeps an input alive after its removal from the scene. It then keeps its value, but has no children or links
// and accepts none. The reference count is not atomic. For threads and errors see Scene.h.
#pragma once

#include "scene/AttrData.h"
#include "scene/Interfaces.h"
#include "scene/Pooled.h"
#include "scene/core/Export.h"

#include <memory>

namespace vor::velmo_sdk::impl {

class Node;
class Output;
template <class Target> class Link;

class VRN_API Input final : public interfaces::IInput, public Pooled {
public:
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    [[nodiscard]] String name() const;
    [[nodiscard]] const String& key() const noexcept { return name_; } // empty for an element
    [[nodiscard]] String label() const override;
    [[nodiscard]] Node* node() const noexcept { return node_; }      // null after its removal
    [[nodiscard]] Input* parent() const noexcept { return parent_; } // null for an input of the node itself
    [[nodiscard]] bool isElement() const noexcept { return parent_ && parent_->type() == AttrType::Array; }
    [[nodiscard]] u64 index() const noexcept { return index_; } // among its siblings

    // The value. It does not contain the target of a Node input, members and elements; see the functions below.
    [[nodiscard]] AttrType type() const noexcept { return value_.type(); }
    [[nodiscard]] String typeName() const override { return attrTypeName(type()); }
    [[nodiscard]] const AttrData& value() const noexcept { return value_; }
    [[nodiscard]] DataType dataType() const noexcept { return value_.dataType(); }
    [[nodiscard]] AttrType elementType() const noexcept { return value_.elementType(); }
    [[nodiscard]] Node* nodeValue() const noexcept;

    // Replaces the value by one of the same type; any other is ignored. Returns whether the value was taken. An Object
    // loses its members, an Array its elements (it keeps its element type if the value has none), a Node its target. A
    // Null input adopts the type of the value; in an array with an element type only that type, and an array without
    // one adopts the type from its first such element, unless that is a Node.
    bool assign(AttrData value);

    // Like assign(), but a value of type Array keeps the elements: it only sets the element type of an array that has
    // none. It is ignored if the type of an element differs from it and is neither Null nor Node. O(n) in the elements.
    bool set(AttrData value);

    // Changes the number of elements of a Buffer in place; new ones are zero. Returns false, without a change, for
    // other inputs and for a buffer of DataType Null. On std::bad_alloc, nothing changes.
    bool resizeBuffer(u64 count);

    // The elements of a Buffer, to be changed in place; see AttrData::elements(). Valid until the buffer is resized,
    // replaced or shared.
    template <class T> [[nodiscard]] std::span<T> elements() { return value_.elements<T>(); }
    [[nodiscard]] std::span<std::byte> bytes() { return value_.bytes(); } // of any type of elements

    // Makes a Node input refer to `node`, or to nothing if it is null; a Null input becomes a Node input first, and
    // others ignore the call.
    void setNode(interfaces::INode* node) override;

    // Members of an Object or elements of an Array, in order of creation.
    [[nodiscard]] std::span<Input* const> children() noexcept;
    [[nodiscard]] std::span<const Input* const> children() const noexcept;
    [[nodiscard]] u64 size() const noexcept { return children().size(); }
    [[nodiscard]] Input* element(u64 i) const noexcept; // null if `i` is not below size()
    [[nodiscard]] Input* input(const String& name) const noexcept;

    // Creates a member of an Object with the zero value of its type. If the name is taken, returns that member
    // unchanged; if this is not an Object, null.
    Input* createInput(const String& name, AttrType type);
    Input* createArray(const String& name, AttrType elementType);

    // Appends an element of its element type to an Array. Returns null if this is not an Array or has
    // SceneLimits::maxArrayElements elements.
    Input* appendElement();

    // Removes a member of an Object, or an element of an Array, with everything below it; the elements after it move
    // up. Returns false if there is none of that name or index. Linear in the members or elements.
    bool removeInput(const String& name);
    bool removeElement(u64 i);

    // The number of elements without a DataType in an array of buffers, or without an element type in an array of
    // arrays, which a later value can set; 0 for all other inputs. O(1).
    [[nodiscard]] u64 untypedElements() const noexcept;

    // The number of elements of type Null. O(1).
    [[nodiscard]] u64 nullElements() const noexcept;

    // The output that this input is connected to, or null. connect(null) is disconnect().
    [[nodiscard]] Output* connection() const noexcept;

    // The node of that output or else nodeValue(); null if there is neither.
    [[nodiscard]] Node* linkedNode() const noexcept;
    void connect(interfaces::IOutput* output) override;
    void disconnect() override;

    // The valid values of a String input; empty if all are. assign() does not check them.
    [[nodiscard]] const StringVector& enumeration() const noexcept;
    void setEnumeration(StringVector entries);

    // Marks for the reader, which connects a locked or link-only input but sets no value of it. assign() ignores them.
    [[nodiscard]] bool isLocked() const noexcept { return isLocked_; }
    [[nodiscard]] bool isLinkOnly() const noexcept { return isLinkOnly_; }
    void setLocked(bool locked) noexcept { isLocked_ = locked; }
    void setLinkOnly(bool linkOnly) noexcept { isLinkOnly_ = linkOnly; }

    void retain() override { ++references_; }
    void release() override;
    [[nodiscard]] bool isAttached() const override { return node_ != nullptr; }

private:
    friend class Node;
    friend class Output;
    friend class Scene;

    // What most inputs do not have (InputExtras.h).
    struct Extras;  // links and content
    struct Content; // children, an enumeration

    Input(Node& node, Input* parent, String name, u64 index, AttrData&& value) noexcept;
    ~Input() override;

    Input* addChild(const String& name, AttrData value);
    void write(AttrData value);
    void writeElement(AttrData value);
    void clearChildren() noexcept;
    void copyFrom(const Input& other);
    [[nodiscard]] Extras& extras();
    [[nodiscard]] Content* content() const noexcept; // null if there is none
    [[nodiscard]] Content& newContent();             // or the existing one
    template <class Target> [[nodiscard]] static Input* linkedBy(Link<Target>* link) noexcept;
    [[nodiscard]] bool takes(AttrType valueType) const noexcept;
    [[nodiscard]] bool mayBeArrayOf(AttrType expected) const noexcept;
    [[nodiscard]] bool isUntyped(AttrType asElementOf) const noexcept;
    void countUntyped() noexcept;
    void typeArrayOf(const Input& element);
    static void removeFrom(std::span<Input* const> siblings, Input* removed) noexcept;
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

} // namespace vor::velmo_sdk::impl

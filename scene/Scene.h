// Scene: the nodes that a text describes, and what the text says of itself.
//
//     Scene scene;
//     if (!parseString(&scene, text)) ...
//     const Node* camera = scene.findNode("cam1");
//     double fov = camera->input("fov")->value().asReal();
//
// A scene owns all that hangs in it. Node names are unique, definitions included, and nodes keep their
// order of creation. Finding, creating and removing a node is O(1), apart from its inputs and links.
// One thread at a time may change a scene; several may read one that nobody changes.
#pragma once

#include "scene/Catalogue.h"
#include "scene/NameMaps.h"
#include "scene/Node.h"
#include "scene/NodeTable.h"
#include "scene/core/Export.h"

#include <atomic>
#include <iterator>
#include <memory>

namespace vor::velmo_sdk::impl {

// The version of a text that names none.
inline constexpr u64 VRX_FILE_VERSION_1 = 1;

// How much a text may make a scene hold.
struct SceneLimits {
    u64 maxArrayElements = 16'777'216;  // of one array
    u64 maxBufferBytes = u64(16) << 30; // of one buffer
    // That come to be because one behind them is named, of all arrays together: a few letters ask for many.
    u64 maxImplicitElements = 16'777'216;
};

class VRN_API Scene final : public interfaces::IScene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene() override;

    // What the header comments say.
    [[nodiscard]] u64 fileVersion() const noexcept { return fileVersion_; }
    [[nodiscard]] const String& fileTime() const noexcept { return fileTime_; }
    [[nodiscard]] const StringVector& fileComments() const noexcept { return comments_; }
    void setFileVersion(u64 version) noexcept { fileVersion_ = version; }
    void setFileTime(const String& time) noexcept { fileTime_ = time; }
    void pushFileComment(const String& comment) { comments_.push(comment); }
    void clearComments() noexcept { comments_.clear(); }

    [[nodiscard]] Node* findNode(const String& name) const noexcept; // or null

    // A hint that findNode() is about to be called for these names, at most 32 of them, so that it need not
    // wait for memory each time.
    void expectNodes(std::span<const String* const> names) const noexcept;

    // A new node; null if the name is taken. It starts with copies of the inputs of the definition
    // that its type names, if there is one (types, values, enumerations and marks, but no links), then
    // with those of the catalogue's type. The third text is the caller's own and not kept.
    Node* createNode(const String& type, const String& name, const String& note = String());

    // A new definition, whose type is its name; null if the name is taken.
    Node* defineNode(const String& name);

    // Takes a node out with its inputs and outputs; connections to it are undone and inputs that refer
    // to it cleared. False if there is none of that name.
    bool removeNode(const String& name);

    [[nodiscard]] u64 nodeCount() const noexcept { return byName_.size(); }

    template <class N> class NodeIterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = N;
        using difference_type = std::ptrdiff_t;
        using pointer = N*;
        using reference = N&;
        explicit NodeIterator(N* node = nullptr) noexcept : node_(node) {}
        N& operator*() const noexcept { return *node_; }
        N* operator->() const noexcept { return node_; }
        NodeIterator& operator++() noexcept {
            node_ = node_->next_;
            return *this;
        }
        NodeIterator operator++(int) noexcept { return std::exchange(*this, NodeIterator(node_->next_)); }
        friend bool operator==(NodeIterator, NodeIterator) = default;

    private:
        N* node_;
    };
    template <class N> struct NodeRange {
        N* first;
        [[nodiscard]] NodeIterator<N> begin() const noexcept { return NodeIterator<N>(first); }
        [[nodiscard]] NodeIterator<N> end() const noexcept { return NodeIterator<N>(); }
    };

    // All nodes in order of creation.
    [[nodiscard]] NodeRange<Node> nodes() noexcept { return {first_}; }
    [[nodiscard]] NodeRange<const Node> nodes() const noexcept { return {first_}; }

    [[nodiscard]] const SceneLimits& limits() const noexcept { return limits_; }
    void setLimits(const SceneLimits& limits) noexcept { limits_ = limits; }

    // The node types that nodes created from now on follow; null for none.
    [[nodiscard]] const Catalogue* catalogue() const noexcept { return catalogue_.get(); }
    void setCatalogue(std::shared_ptr<const Catalogue> catalogue) noexcept { catalogue_ = std::move(catalogue); }

    // Whether a node without a catalogued type refuses to grow outputs.
    [[nodiscard]] bool hasStrictOutputs() const noexcept { return hasStrictOutputs_; }
    void setStrictOutputs(bool strict) noexcept { hasStrictOutputs_ = strict; }

private:
    friend class Node;
    friend class Input;

    // Where the things of this scene stand.
    struct Pools {
        SlabPool nodes{sizeof(Node)};
        SlabPool inputs{sizeof(Input)};
        SlabPool extras{Input::extrasSize()};
        SlabPool outputs{sizeof(Output)};
    };

    Node* addNode(const String& type, const String& name, bool isDefinition);
    void deleteNode(Node* node) noexcept;

    Pools pools_;
    u64 fileVersion_ = VRX_FILE_VERSION_1;
    String fileTime_;
    StringVector comments_;
    NodeTable<Node> byName_;
    mutable std::atomic<Node*> found_ = nullptr; // last: most statements are about one node
    u64 definitions_ = 0;
    Node* first_ = nullptr;
    Node* last_ = nullptr;
    SceneLimits limits_;
    std::shared_ptr<const Catalogue> catalogue_;
    bool hasStrictOutputs_ = false;
};

} // namespace vor::velmo_sdk::impl

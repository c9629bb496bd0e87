// Scene: the nodes of a file and its metadata.
//
//     Scene scene;
//     if (!parseString(&scene, text)) ...
//     const Node* camera = scene.findNode("cam1");
//     double fov = camera->input("fov")->value().asReal();
//
// A scene owns its nodes and through them all inputs and outputs; a pointer to one is valid until that object is
// removed, a Handle to one for as long as it likes. Names of nodes, including definitions, are unique, and nodes keep
// their order of creation. Looking up a node is O(1); creating or removing one is linear in its inputs and links.
// Several threads may read a scene while none changes it; a change needs exclusive access. A function that creates an
// object throws std::bad_alloc if there is no memory, and then leaves the scene unchanged.
#pragma once

#include "scene/Catalogue.h"
#include "scene/NameMaps.h"
#include "scene/Node.h"
#include "scene/core/Export.h"

#include <atomic>
#include <iterator>
#include <memory>

namespace vor::velmo_sdk::impl {

// The version of a file that states none.
inline constexpr u64 VRX_FILE_VERSION_1 = 1;

// Bounds on the memory that a file can make the reader allocate.
struct SceneLimits {
    u64 maxArrayElements = 16'777'216;  // of one array
    u64 maxBufferBytes = u64(16) << 30; // of one buffer
    // Elements of all arrays that a statement creates only because it names a higher index: short input, many elements.
    u64 maxImplicitElements = 16'777'216;
};

class VRN_API Scene final : public interfaces::IScene {
public:
    Scene(); // throws std::bad_alloc
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene() override;

    // The metadata and text of the header comments.
    [[nodiscard]] u64 fileVersion() const noexcept { return fileVersion_; }
    [[nodiscard]] const String& fileTime() const noexcept { return fileTime_; }
    [[nodiscard]] const StringVector& fileComments() const noexcept { return comments_; }
    void setFileVersion(u64 version) noexcept { fileVersion_ = version; }
    void setFileTime(const String& time) noexcept { fileTime_ = time; }
    void pushFileComment(const String& comment) { comments_.push(comment); }
    void clearComments() noexcept { comments_.clear(); }

    [[nodiscard]] Node* findNode(const String& name) const noexcept; // or null

    // Prefetches what findNode() reads for the first 32 of these names, so that their cache misses overlap.
    void expectNodes(std::span<const String* const> names) const noexcept;

    // Creates a node; returns null if the name is taken. The node gets copies of the inputs of the definition that its
    // type names, if there is one (types, values, enumerations and marks, but no links), then the inputs that the
    // catalogue declares for its type. `note` is ignored.
    Node* createNode(const String& type, const String& name, const String& note = String());

    // Creates a definition, whose type is its name; returns null if the name is taken.
    Node* defineNode(const String& name);

    // Removes a node with its inputs and outputs, disconnects the inputs that are connected to it, and clears those
    // that refer to it. Destroys what is not retained. Returns false if no node has that name.
    bool removeNode(const String& name);

    // Renames a node, to which all links stay. The name of a definition is a type: the nodes of that type change
    // theirs. Returns false, without a change, if no node has that name or another one has the new name. O(1), for a
    // definition linear in the nodes.
    bool renameNode(const String& name, const String& newName);

    [[nodiscard]] u64 nodeCount() const noexcept;

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

    // All nodes in order of creation. An iterator is valid until its node is removed.
    [[nodiscard]] NodeRange<Node> nodes() noexcept { return {first_}; }
    [[nodiscard]] NodeRange<const Node> nodes() const noexcept { return {first_}; }

    [[nodiscard]] const SceneLimits& limits() const noexcept { return limits_; }
    void setLimits(const SceneLimits& limits) noexcept { limits_ = limits; }

    // The node types that apply to nodes created from now on, or null. Must not change while a scene shares it.
    [[nodiscard]] const Catalogue* catalogue() const noexcept { return catalogue_.get(); }
    void setCatalogue(std::shared_ptr<const Catalogue> catalogue) noexcept { catalogue_ = std::move(catalogue); }

    // Whether Node::findOutput() never creates an output, even if the node's type is not in the catalogue.
    [[nodiscard]] bool hasStrictOutputs() const noexcept { return hasStrictOutputs_; }
    void setStrictOutputs(bool strict) noexcept { hasStrictOutputs_ = strict; }

private:
    friend class Node;
    friend class Input;

    // The memory of the nodes and the index of their names (SceneStorage.h).
    struct Storage;

    Node* addNode(const String& type, const String& name, bool isDefinition);
    void unlinkNode(Node* node) noexcept;

    std::unique_ptr<Storage> storage_; // destroyed after all nodes
    u64 fileVersion_ = VRX_FILE_VERSION_1;
    String fileTime_;
    StringVector comments_;
    mutable std::atomic<Node*> found_ = nullptr; // the last result: consecutive statements often name the same node
    u64 definitions_ = 0;
    Node* first_ = nullptr;
    Node* last_ = nullptr;
    SceneLimits limits_;
    std::shared_ptr<const Catalogue> catalogue_;
    bool hasStrictOutputs_ = false;
};

// Each thread keeps up to 8 MiB of the memory of destroyed scenes for its next one. Frees what this thread keeps, which
// otherwise happens when the thread ends.
VRN_API void releaseSpareMemory() noexcept;

} // namespace vor::velmo_sdk::impl

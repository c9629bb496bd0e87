#include "scene/Scene.h"

#include "scene/SceneStorage.h"

#include <algorithm>
#include <array>

namespace vor::velmo_sdk::impl {

Scene::Scene() : storage_(std::make_unique<Storage>()) {}

Scene::~Scene() {
    while (first_)
        unlinkNode(first_);
}

Node* Scene::findNode(const String& name) const noexcept {
    Node* last = found_.load(std::memory_order_relaxed);
    if (last && last->key() == name)
        return last;
    Node* node = storage_->byName.find(name, NameTable<Node>::hashOf(name));
    if (node)
        found_.store(node, std::memory_order_relaxed);
    return node;
}

void Scene::expectNodes(std::span<const String* const> names) const noexcept {
    std::array<u64, NameTable<Node>::maxTouched> hashes;
    const std::size_t count = std::min(names.size(), hashes.size());
    for (std::size_t i = 0; i < count; ++i)
        hashes[i] = NameTable<Node>::hashOf(*names[i]);
    storage_->byName.touch(std::span(hashes).first(count));
}

u64 Scene::nodeCount() const noexcept { return storage_->byName.size(); }

Node* Scene::createNode(const String& type, const String& name, const String&) { return addNode(type, name, false); }

Node* Scene::defineNode(const String& name) { return addNode(name, name, true); }

bool Scene::removeNode(const String& name) {
    Node* node = findNode(name);
    if (!node)
        return false;
    storage_->byName.erase(node);
    unlinkNode(node);
    return true;
}

bool Scene::renameNode(const String& name, const String& newName) {
    Node* node = findNode(name);
    if (!node || findNode(newName))
        return node && name == newName;
    const String type = node->type();
    storage_->byName.erase(node);
    node->name_ = newName;
    storage_->byName.insert(node, NameTable<Node>::hashOf(newName)); // into the slot that erase() freed
    if (node->isDefinition())
        for (Node& each : nodes())
            if (each.type_ == type)
                each.type_ = newName;
    return true;
}

Node* Scene::addNode(const String& type, const String& name, bool isDefinition) {
    const u64 hash = NameTable<Node>::hashOf(name);
    if (storage_->byName.find(name, hash))
        return nullptr;
    struct DetachNode {
        void operator()(Node* node) const noexcept { node->detach(); }
    };
    std::unique_ptr<Node, DetachNode> node(new (storage_->nodes) Node(*this, type, name, isDefinition));
    const Node* definition = isDefinition || definitions_ == 0 ? nullptr : findNode(type);
    if (definition && definition->isDefinition())
        node->copyInputsFrom(*definition);
    if (const NodeType* catalogued = catalogue_ ? catalogue_->find(type) : nullptr)
        node->addCatalogued(*catalogued);
    storage_->byName.reserveOne(); // the last call that may throw
    Node* added = node.release();
    storage_->byName.insert(added, hash);
    definitions_ += isDefinition ? 1U : 0U;
    found_.store(added, std::memory_order_relaxed);
    added->previous_ = last_;
    (last_ ? last_->next_ : first_) = added;
    last_ = added;
    return added;
}

// Removes a node, which the caller has removed from the index.
void Scene::unlinkNode(Node* node) noexcept {
    definitions_ -= node->isDefinition() ? 1U : 0U;
    if (found_.load(std::memory_order_relaxed) == node)
        found_.store(nullptr, std::memory_order_relaxed);
    (node->previous_ ? node->previous_->next_ : first_) = node->next_;
    (node->next_ ? node->next_->previous_ : last_) = node->previous_;
    node->previous_ = nullptr;
    node->next_ = nullptr;
    node->detach();
}

} // namespace vor::velmo_sdk::impl

#include "scene/Scene.h"

namespace vor::velmo_sdk::impl {

Scene::~Scene() {
    while (first_)
        deleteNode(first_);
}

Node* Scene::findNode(const String& name) const noexcept { return byName_.find(name); }

Node* Scene::createNode(const String& type, const String& name, const String&) { return addNode(type, name, false); }

Node* Scene::defineNode(const String& name) { return addNode(name, name, true); }

bool Scene::removeNode(const String& name) {
    Node* node = findNode(name);
    if (!node)
        return false;
    byName_.erase(node);
    deleteNode(node);
    return true;
}

Node* Scene::addNode(const String& type, const String& name, bool isDefinition) {
    if (findNode(name))
        return nullptr;
    struct DeleteNode {
        void operator()(Node* node) const noexcept { delete node; }
    };
    std::unique_ptr<Node, DeleteNode> node(new Node(*this, type, name, isDefinition));
    const Node* definition = isDefinition ? nullptr : findNode(type);
    if (definition && definition->isDefinition())
        node->copyInputsFrom(*definition);
    if (const NodeType* catalogued = catalogue_ ? catalogue_->find(type) : nullptr)
        node->addCatalogued(*catalogued);
    byName_.reserveOne();
    byName_.insert(node.get());
    node->previous_ = last_;
    (last_ ? last_->next_ : first_) = node.get();
    last_ = node.get();
    return node.release();
}

// Takes a node out of the order and deletes it; its name is the caller's to forget.
void Scene::deleteNode(Node* node) noexcept {
    (node->previous_ ? node->previous_->next_ : first_) = node->next_;
    (node->next_ ? node->next_->previous_ : last_) = node->previous_;
    delete node;
}

} // namespace vor::velmo_sdk::impl

#include "convert/import/gltf/GltfHierarchy.h"

#include "convert/shared/GltfNesting.h"

#include <algorithm>
#include <unordered_set>

namespace vrn::convert {

namespace {

class HierarchyReader {
public:
    explicit HierarchyReader(const GltfValue& root) : scenes_(root["scenes"]), nodes_(root["nodes"]) {}

    GltfHierarchy read() {
        hierarchy_.parents.assign(nodes_.size(), GltfHierarchy::none);
        isAdded_.assign(nodes_.size(), false);
        readParents();
        scenes_.forEach([&](const GltfValue& scene, u64) {
            std::unordered_set<u64> listed;
            scene["nodes"].forEach([&](const GltfValue& root, u64) {
                const u64 index = root.indexIn(nodes_);
                if (!listed.insert(index).second)
                    root.refuse("the scene lists the node twice");
                if (hierarchy_.parents[index] != GltfHierarchy::none)
                    root.refuse("the node is a child of another node");
                add(index);
            });
        });
        for (u64 i = 0; i < nodes_.size(); ++i)
            if (hierarchy_.parents[i] == GltfHierarchy::none)
                add(i);
        if (const auto left = std::ranges::find(isAdded_, false); left != isAdded_.end())
            nodes_[static_cast<u64>(left - isAdded_.begin())]["children"].refuse("the node is its own ancestor");
        return std::move(hierarchy_);
    }

private:
    void readParents() {
        nodes_.forEach([&](const GltfValue& node, u64 parent) {
            node["children"].forEach([&](const GltfValue& child, u64) {
                u64& known = hierarchy_.parents[child.indexIn(nodes_)];
                if (known != GltfHierarchy::none)
                    child.refuse("the node has a parent already, /nodes/" + std::to_string(known));
                known = parent;
            });
        });
    }

    // Adds a tree depth first.
    void add(u64 root) {
        struct Pending {
            u64 node;
            u64 depth;
        };
        std::vector<Pending> pending;
        if (!isAdded_[root])
            pending.push_back({root, 0});
        while (!pending.empty()) {
            const auto [node, depth] = pending.back();
            pending.pop_back();
            if (depth > maxNodeDepth)
                nodes_[node].refuse("the nodes are nested more than 1000 levels deep");
            hierarchy_.order.push_back(node);
            isAdded_[node] = true;
            const GltfValue children = nodes_[node]["children"];
            for (u64 i = children.size(); i > 0; --i)
                pending.push_back({children[i - 1].indexIn(nodes_), depth + 1});
        }
    }

    GltfValue scenes_;
    GltfValue nodes_;
    GltfHierarchy hierarchy_;
    std::vector<bool> isAdded_;
};

} // namespace

GltfHierarchy readHierarchy(const GltfValue& root) { return HierarchyReader(root).read(); }

} // namespace vrn::convert

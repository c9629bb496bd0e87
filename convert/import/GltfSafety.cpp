#include "convert/import/GltfSafety.h"

#include <vector>

namespace vrn::convert {

namespace {

constexpr std::size_t maxDepth = 1000;

struct Hierarchy {
    std::vector<std::vector<u64>> children{};
    std::vector<bool> isChild{};
};

// Adds all children; false if one does not exist or has several parents.
bool readChildren(const GltfValue& json, Hierarchy& hierarchy) {
    for (u64 i = 0; i < hierarchy.children.size(); ++i) {
        const GltfValue* node = itemOf(json, "nodes", i);
        const GltfValue* children = memberOf(node, "children");
        if (!children || !children->IsArray())
            continue;
        for (const GltfValue& child : children->GetArray()) {
            if (!child.IsUint64() || child.GetUint64() >= hierarchy.isChild.size() ||
                hierarchy.isChild[child.GetUint64()])
                return false;
            hierarchy.isChild[child.GetUint64()] = true;
            hierarchy.children[i].push_back(child.GetUint64());
        }
    }
    return true;
}

// Traverses level by level from the roots; nodes in cycles are never reached.
std::string depthProblem(const Hierarchy& hierarchy) {
    std::vector<u64> level;
    for (u64 i = 0; i < hierarchy.children.size(); ++i)
        if (!hierarchy.isChild[i])
            level.push_back(i);
    std::size_t reached = 0;
    for (std::size_t depth = 0; !level.empty(); ++depth) {
        if (depth > maxDepth)
            return "its nodes are nested more than 1000 levels deep";
        reached += level.size();
        std::vector<u64> next;
        for (const u64 node : level)
            next.insert(next.end(), hierarchy.children[node].begin(), hierarchy.children[node].end());
        level = std::move(next);
    }
    return reached == hierarchy.children.size() ? "" : "its nodes form a cycle";
}

} // namespace

bool isNestedTooDeeply(std::string_view json) {
    std::size_t depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (c == '"')
            isInString = !isInString;
        else if (isInString)
            i += c == '\\' ? 1 : 0;
        else if ((c == '[' || c == '{') && ++depth > maxDepth)
            return true;
        else if ((c == ']' || c == '}') && depth > 0)
            --depth;
    }
    return false;
}

std::string hierarchyProblem(const GltfValue& json) {
    const GltfValue* nodes = memberOf(&json, "nodes");
    if (!nodes || !nodes->IsArray())
        return "";
    Hierarchy hierarchy{.children = std::vector<std::vector<u64>>(nodes->Size()),
                        .isChild = std::vector<bool>(nodes->Size())};
    if (!readChildren(json, hierarchy))
        return "its nodes have children that do not exist or have several parents";
    return depthProblem(hierarchy);
}

} // namespace vrn::convert

#include "convert/model/ShownMeshes.h"

#include <algorithm>

namespace vrn::convert {

std::vector<bool> shownNodes(const Model& model) {
    std::vector<bool> isShown(model.nodes.size(), model.scenes.empty());
    if (model.scenes.empty())
        return isShown;
    const auto first = std::ranges::find(model.scenes, true, &SceneNodes::isDefault);
    std::vector<u32> pending = (first == model.scenes.end() ? model.scenes.front() : *first).roots;
    while (!pending.empty()) {
        const u32 index = pending.back();
        pending.pop_back();
        isShown[index] = true;
        const std::vector<u32>& children = model.nodes[index].children;
        pending.insert(pending.end(), children.begin(), children.end());
    }
    return isShown;
}

Matrix instanceMatrix(const Instances& instances, std::size_t index) {
    Trs trs;
    const auto copy = [&](const Values<float>& from, auto& to) {
        if (!from.empty())
            std::ranges::copy(from.span().subspan(index * to.size(), to.size()), to.begin());
    };
    copy(instances.translations, trs.translation);
    copy(instances.rotations, trs.rotation);
    copy(instances.scales, trs.scale);
    return toMatrix(trs);
}

} // namespace vrn::convert

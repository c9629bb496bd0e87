#include "convert/import/NodeTransforms.h"

#include "convert/shared/NodeInputs.h"

namespace vrn::convert {

void setTrs(Node& node, const Trs& trs, bool isAnimated) {
    const Trs initial;
    if (isAnimated || trs.translation != initial.translation)
        setNumbers(node, "translation", AttrType::Vec3, trs.translation);
    if (isAnimated || trs.rotation != initial.rotation)
        setNumbers(node, "rotation", AttrType::Quat, trs.rotation);
    if (isAnimated || trs.scale != initial.scale)
        setNumbers(node, "scale", AttrType::Vec3, trs.scale);
}

void setMatrix(Node& node, const Matrix& matrix, bool isAnimated, Losses& losses) {
    const Trs trs = decomposeTransform(matrix);
    if (toMatrix(trs) != matrix && !isAnimated)
        return setNumbers(node, "transform", AttrType::Mat4, matrix);
    if (isSheared(matrix, trs))
        losses.add("shear of animated nodes", node);
    setTrs(node, trs, isAnimated);
}

} // namespace vrn::convert

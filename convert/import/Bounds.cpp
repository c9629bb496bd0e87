#include "convert/import/Bounds.h"

#include "convert/shared/NodeInputs.h"

#include <algorithm>
#include <array>

namespace vrn::convert {

void setBounds(Node& mesh, std::span<const float> points) {
    std::array<double, 3> min{};
    std::array<double, 3> max{};
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double number = static_cast<double>(points[i]);
        min[i % 3] = i < 3 ? number : std::min(min[i % 3], number);
        max[i % 3] = i < 3 ? number : std::max(max[i % 3], number);
    }
    setAt(mesh, "bounds.min", valueOf(AttrType::Pos3, min));
    setAt(mesh, "bounds.max", valueOf(AttrType::Pos3, max));
}

} // namespace vrn::convert

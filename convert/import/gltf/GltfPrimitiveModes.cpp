#include "convert/import/gltf/GltfPrimitiveModes.h"

#include <numeric>

namespace vrn::convert {

namespace {

std::vector<u32> linesOfStrip(const std::vector<u32>& strip, bool isLoop) {
    std::vector<u32> lines;
    for (std::size_t i = 1; i < strip.size(); ++i)
        lines.insert(lines.end(), {strip[i - 1], strip[i]});
    if (isLoop && strip.size() > 1)
        lines.insert(lines.end(), {strip.back(), strip.front()});
    return lines;
}

// Every second triangle of a strip is reversed, so that all have the same winding: (i, i+1, i+2), (i, i+2, i+1).
std::vector<u32> trianglesOfStrip(const std::vector<u32>& strip) {
    std::vector<u32> triangles;
    for (std::size_t i = 0; i + 2 < strip.size(); ++i)
        triangles.insert(triangles.end(), {strip[i], strip[i + 1 + i % 2], strip[i + 2 - i % 2]});
    return triangles;
}

// (i+1, i+2, 0), as glTF orders them.
std::vector<u32> trianglesOfFan(const std::vector<u32>& fan) {
    std::vector<u32> triangles;
    for (std::size_t i = 0; i + 2 < fan.size(); ++i)
        triangles.insert(triangles.end(), {fan[i + 1], fan[i + 2], fan[0]});
    return triangles;
}

} // namespace

PrimitiveList listOf(const GltfValue& mode, std::optional<std::vector<u32>> indices, u64 vertices, bool& isComplete) {
    PrimitiveList list{.topology = "triangles", .indices = {}, .isSequence = !indices};
    std::vector<u32> corners = indices ? std::move(*indices) : std::vector<u32>(vertices);
    if (list.isSequence)
        std::iota(corners.begin(), corners.end(), 0U);
    const auto whole = [&](std::size_t cornersPerFace) {
        isComplete = corners.size() % cornersPerFace == 0;
        list.isSequence &= isComplete;
        corners.resize(corners.size() - corners.size() % cornersPerFace);
        list.indices = std::move(corners);
    };
    const auto converted = [&](std::vector<u32> from) {
        list.indices = std::move(from);
        list.isSequence = false;
        isComplete = !list.indices.empty();
    };
    switch (mode.whole(4)) {
    case 0:
        list.topology = "points";
        whole(1);
        break;
    case 1:
        list.topology = "lines";
        whole(2);
        break;
    case 2:
    case 3:
        list.topology = "lines";
        converted(linesOfStrip(corners, mode.whole() == 2));
        break;
    case 4:
        whole(3);
        break;
    case 5:
        converted(trianglesOfStrip(corners));
        break;
    case 6:
        converted(trianglesOfFan(corners));
        break;
    default:
        mode.refuse("it is no primitive mode");
    }
    return list;
}

} // namespace vrn::convert

#include "convert/model/Polygons.h"

#include "convert/shared/Triangulation.h"

namespace vrn::convert {

void triangulate(Geometry& geometry, Losses& losses) {
    std::vector<u32> triangles;
    std::span<const u32> corners = geometry.indices.span();
    bool hasPolygons = false;
    for (const u32 count : geometry.faceCounts) {
        hasPolygons |= count > 3;
        if (!addTriangles(corners.first(count), geometry.points.span(), triangles))
            losses.add(lostConcavities, *geometry.source);
        corners = corners.subspan(count);
    }
    if (hasPolygons)
        losses.add("polygons with more than three corners (triangulated)", *geometry.source);
    geometry.indices = Values<u32>(std::move(triangles));
    geometry.faceCounts.clear();
    geometry.topology = Topology::Triangles;
}

} // namespace vrn::convert

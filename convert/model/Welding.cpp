#include "convert/model/Welding.h"

#include <algorithm>
#include <unordered_map>

namespace vrn::convert {

namespace {

// The elements at `indices`.
template <class T> Values<T> pick(const Values<T>& values, std::size_t components, std::span<const u32> indices) {
    if (values.empty())
        return {};
    std::vector<T> picked(indices.size() * components);
    for (std::size_t i = 0; i < indices.size(); ++i)
        std::copy_n(values.span().subspan(indices[i] * components).begin(), components,
                    picked.begin() + static_cast<std::ptrdiff_t>(i * components));
    return Values<T>(std::move(picked));
}

// Numbers distinct pairs in the order of their first occurrence.
std::vector<u32> numberPairs(std::span<const u32> first, std::span<const u32> second) {
    std::unordered_map<u64, u32> numbers;
    std::vector<u32> numbered(first.size());
    for (std::size_t i = 0; i < first.size(); ++i)
        numbered[i] = numbers.emplace(u64(first[i]) << 32 | second[i], static_cast<u32>(numbers.size())).first->second;
    return numbered;
}

// The first corner with each number.
std::vector<u32> firstCorners(std::span<const u32> numbered) {
    std::vector<u32> corners;
    for (std::size_t i = 0; i < numbered.size(); ++i)
        if (numbered[i] == corners.size())
            corners.push_back(static_cast<u32>(i));
    return corners;
}

} // namespace

void weld(Geometry& geometry, const std::vector<Values<u32>>& attributes) {
    std::vector<u32> vertices(geometry.indices.begin(), geometry.indices.end());
    for (const Values<u32>& attribute : attributes)
        if (!attribute.empty())
            vertices = numberPairs(vertices, attribute.span());
    const std::vector<u32> corners = firstCorners(vertices);
    const auto atCorners = [&](std::span<const u32> indices) {
        std::vector<u32> picked;
        picked.reserve(corners.size());
        for (const u32 corner : corners)
            picked.push_back(indices[corner]);
        return picked;
    };
    const std::vector<u32> points = atCorners(geometry.indices.span());
    const auto indicesOf = [&](std::size_t i) {
        return attributes[i].empty() ? points : atCorners(attributes[i].span());
    };

    geometry.normals = pick(geometry.normals, 3, indicesOf(attributes.size() - 1));
    for (std::size_t i = 0; i < geometry.uvsets.size(); ++i)
        geometry.uvsets[i] = pick(geometry.uvsets[i], 2, indicesOf(i));
    geometry.forEachVertexArray(
        [&](auto& values, std::size_t components) { values = pick(values, components, points); });
    geometry.indices = Values<u32>(std::move(vertices));
}

} // namespace vrn::convert

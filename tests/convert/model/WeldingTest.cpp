#include "convert/model/Welding.h"

#include <gtest/gtest.h>

namespace vrn::test {

using namespace vrn::convert;

template <class T> static std::vector<T> listed(const Values<T>& values) {
    return {values.span().begin(), values.span().end()};
}

// Two triangles share points 0 and 1. Point 1 has another texture coordinate in the second one, so it becomes two
// vertices, each with all attributes of the point.
TEST(Welding, splitsPointsByTheirAttributes) {
    Geometry geometry;
    geometry.points = Values<float>(std::vector<float>{0, 1, 2, 10, 11, 12, 20, 21, 22});
    geometry.normals = Values<float>(std::vector<float>{0, 0, 1, 0, 1, 0, 1, 0, 0});
    geometry.tangents = Values<float>(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    geometry.colors = Values<float>(std::vector<float>{.1F, .2F, .3F, .4F, .5F, .6F, .7F, .8F, .9F, 1, 0, 1});
    geometry.influences.push_back(
        {.joints = Values<u32>(std::vector<u32>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}),
         .weights = Values<float>(std::vector<float>{.5F, .5F, 0, 0, .25F, .25F, .5F, 0, 1, 0, 0, 0})});
    geometry.targets.emplace_back().coords = Values<float>(std::vector<float>{0, 1, 2, 3, 4, 5});
    geometry.uvsets.emplace_back(std::vector<float>{0, 0, 1, 0, 0, 1, 1, 1});
    geometry.indices = Values<u32>(std::vector<u32>{0, 1, 2, 1, 0, 2});
    std::vector<Values<u32>> attributes;
    attributes.emplace_back(std::vector<u32>{0, 1, 2, 3, 0, 2});
    attributes.emplace_back();
    weld(geometry, attributes);
    EXPECT_EQ(listed(geometry.indices), (std::vector<u32>{0, 1, 2, 3, 0, 2}));
    EXPECT_EQ(listed(geometry.points), (std::vector<float>{0, 1, 2, 10, 11, 12, 20, 21, 22, 10, 11, 12}));
    EXPECT_EQ(listed(geometry.normals), (std::vector<float>{0, 0, 1, 0, 1, 0, 1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(listed(geometry.uvsets[0]), (std::vector<float>{0, 0, 1, 0, 0, 1, 1, 1}));
    EXPECT_EQ(listed(geometry.tangents), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 5, 6, 7, 8}));
    EXPECT_EQ(listed(geometry.colors),
              (std::vector<float>{.1F, .2F, .3F, .4F, .5F, .6F, .7F, .8F, .9F, 1, 0, 1, .5F, .6F, .7F, .8F}));
    EXPECT_EQ(listed(geometry.influences[0].joints),
              (std::vector<u32>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 5, 6, 7, 8}));
    EXPECT_EQ(listed(geometry.influences[0].weights),
              (std::vector<float>{.5F, .5F, 0, 0, .25F, .25F, .5F, 0, 1, 0, 0, 0, .25F, .25F, .5F, 0}));
    EXPECT_EQ(listed(geometry.targets[0].coords), (std::vector<float>{0, 1, 2, 3, 4, 5, 2, 3}));
}

} // namespace vrn::test

#include "tests/support/Reading.h"

#include <set>

namespace vrn::test {

TEST(AttrType, hasNames) {
    const char* names[] = {"Null", "Bool", "Int",  "UInt", "Real",   "Vec2", "Vec3",   "Vec4",  "Pos2",  "Pos3",
                           "Quat", "Rgba", "Mat3", "Mat4", "String", "Node", "Buffer", "Array", "Object"};
    static_assert(std::size(names) == attrTypeCount);
    for (i32 i = 0; i < attrTypeCount; ++i) {
        const auto type = static_cast<AttrType>(i);
        EXPECT_STREQ(attrTypeName(type), names[i]);
        EXPECT_STREQ(valueTypeName(type), i == 0 ? "<unknown>" : names[i]);
        EXPECT_EQ(attrTypeByName(names[i]), type);
    }
    EXPECT_STREQ(attrTypeName(static_cast<AttrType>(19)), "<unknown>");
    EXPECT_STREQ(attrTypeName(static_cast<AttrType>(-1)), "<unknown>");
    EXPECT_STREQ(valueTypeName(static_cast<AttrType>(19)), "<unknown>");
    EXPECT_EQ(attrTypeByName("real"), std::nullopt);
    EXPECT_EQ(componentCount(AttrType::Mat4), 16U);
    EXPECT_EQ(componentCount(static_cast<AttrType>(99)), 0U);
    EXPECT_EQ(valueKind(AttrType::Real), ValueKind::Real);
    EXPECT_EQ(valueKind(AttrType::Mat4), ValueKind::Components);
    EXPECT_EQ(valueKind(AttrType::Object), ValueKind::Object);
    EXPECT_EQ(valueKind(static_cast<AttrType>(99)), ValueKind::Null);
}

TEST(DataType, hasNames) {
    EXPECT_STREQ(dataTypeName(DataType::Null), "Null");
    EXPECT_EQ(static_cast<i32>(DataType::Vec3f), 17);
    EXPECT_EQ(static_cast<i32>(DataType::Rgba8), 38);
    EXPECT_EQ(static_cast<i32>(DataType::ColorRef), 59);
    EXPECT_STREQ(dataTypeName(DataType::ColorRef), "ColorRef");
    std::set<std::string_view> names;
    for (i32 i = 0; i < dataTypeCount; ++i) {
        const std::string_view name = dataTypeName(static_cast<DataType>(i));
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_TRUE(!name.empty() && name[0] >= 'A' && name[0] <= 'Z') << "name of " << i;
    }
    EXPECT_STREQ(dataTypeName(static_cast<DataType>(60)), "<unknown>");
    EXPECT_STREQ(dataTypeName(static_cast<DataType>(-1)), "<unknown>");
    for (i32 i = 0; i < dataTypeCount; ++i)
        EXPECT_EQ(dataTypeByName(dataTypeName(static_cast<DataType>(i))), static_cast<DataType>(i));
    EXPECT_EQ(dataTypeByName("vec3f"), std::nullopt);
}

TEST(DataType, hasLayouts) {
    using D = DataType;
    const struct {
        u32 elementSize;
        D componentType;
        u32 componentSize;
        std::vector<D> types;
    } rows[] = {
        {0, D::Null, 0, {D::Null}},
        {1, D::Bool, 1, {D::Bool}},
        {1, D::Char, 1, {D::Char}},
        {1, D::Byte, 1, {D::Byte}},
        {2, D::Int16, 2, {D::Int16}},
        {2, D::UInt16, 2, {D::UInt16}},
        {4, D::Int32, 4, {D::Int32}},
        {4, D::UInt32, 4, {D::UInt32}},
        {4, D::Float, 4, {D::Float}},
        {8, D::Int64, 8, {D::Int64}},
        {8, D::UInt64, 8, {D::UInt64}},
        {8, D::Double, 8, {D::Double}},
        {8, D::Ptr, 8, {D::Ptr}},
        {8, D::Float, 4, {D::Vec2f, D::Pos2f}},
        {8, D::Int32, 4, {D::Vec2i, D::Pos2i}},
        {8, D::UInt32, 4, {D::Vec2u}},
        {16, D::Double, 8, {D::Vec2d, D::Pos2d}},
        {12, D::Float, 4, {D::Vec3f, D::Pos3f, D::Rgbf, D::Hsvf, D::Hslf}},
        {12, D::Int32, 4, {D::Vec3i, D::Pos3i}},
        {12, D::UInt32, 4, {D::Vec3u}},
        {24, D::Double, 8, {D::Vec3d, D::Pos3d, D::Rgbd, D::Hsvd, D::Hsld}},
        {16, D::Float, 4, {D::Vec4f, D::Quatf, D::Rgbaf}},
        {16, D::Int32, 4, {D::Vec4i}},
        {16, D::UInt32, 4, {D::Vec4u}},
        {32, D::Double, 8, {D::Vec4d, D::Quatd, D::Rgbad}},
        {36, D::Float, 4, {D::Mat3f}},
        {36, D::Int32, 4, {D::Mat3i}},
        {72, D::Double, 8, {D::Mat3d}},
        {64, D::Float, 4, {D::Mat4f}},
        {64, D::Int32, 4, {D::Mat4i}},
        {128, D::Double, 8, {D::Mat4d}},
        {3, D::Byte, 1, {D::Rgb8}},
        {4, D::Byte, 1, {D::Rgba8, D::Argb8, D::ColorRef}},
        {40, D::Float, 4, {D::Xformf}},
        {40, D::Int32, 4, {D::Xformi}},
        {80, D::Double, 8, {D::Xformd}},
        {24, D::Float, 4, {D::Aabbf}},
        {24, D::Int32, 4, {D::Aabbi}},
        {48, D::Double, 8, {D::Aabbd}},
        {76, D::Float, 4, {D::Obbf}},
        {76, D::Int32, 4, {D::Obbi}},
        {152, D::Double, 8, {D::Obbd}},
    };
    std::size_t covered = 0;
    for (const auto& row : rows) {
        for (const DataType type : row.types) {
            const ElementLayout layout = elementLayout(type);
            EXPECT_EQ(layout.elementSize(), row.elementSize) << dataTypeName(type);
            EXPECT_EQ(layout.componentType, row.componentType) << dataTypeName(type);
            EXPECT_EQ(layout.componentSize, row.componentSize) << dataTypeName(type);
            EXPECT_EQ(layout.isCompressible(), row.componentSize == 1) << dataTypeName(type);
            ++covered;
        }
    }
    EXPECT_EQ(covered, std::size_t(dataTypeCount));
    EXPECT_EQ(elementLayout(static_cast<DataType>(60)).elementSize(), 0U);
}

} // namespace vrn::test

#include "tests/support/Reading.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>

namespace vrn::test {

TEST(AttrData, startsAsNull) {
    const AttrData data;
    EXPECT_EQ(data.type(), AttrType::Null);
    EXPECT_FALSE(data.asBool());
    EXPECT_EQ(data.asInt(), 0);
    EXPECT_EQ(data.asUInt(), 0U);
    EXPECT_EQ(data.asReal(), 0);
    EXPECT_STREQ(data.asString(), "");
    EXPECT_TRUE(data.components().empty());
    EXPECT_TRUE(data.bytes().empty());
    EXPECT_TRUE(data.elements<float>().empty());
    EXPECT_LE(sizeof(AttrData), 40U);
}

TEST(AttrData, holdsValuesOfEachType) {
    EXPECT_TRUE(AttrData::boolean(true).asBool());
    EXPECT_EQ(AttrData::integer(-5).asInt(), -5);
    EXPECT_EQ(AttrData::integer(-5).asUInt(), 0U) << "an Int is no UInt";
    EXPECT_EQ(AttrData::unsignedInteger(~u64(0)).asUInt(), ~u64(0));
    EXPECT_EQ(AttrData::real(2.5).asReal(), 2.5);
    EXPECT_EQ(AttrData::real(2.5).components().size(), 1U);
    EXPECT_STREQ(AttrData::string("text").asString(), "text");
    EXPECT_STREQ(AttrData::string({"a\0b", 3}).asString(), "a") << "a NUL ends a string";
    EXPECT_EQ(AttrData::array(AttrType::Int).elementType(), AttrType::Int);
    const AttrData buffer = AttrData::buffer(DataType::Vec3f, 2);
    EXPECT_EQ(buffer.dataType(), DataType::Vec3f);
    EXPECT_EQ(buffer.count(), 2U);
    EXPECT_EQ(buffer.bytes().size(), 24U);
}

TEST(AttrData, isMadeByType) {
    const double numbers[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const std::pair<AttrType, AttrData> made[] = {
        {AttrType::Vec2, AttrData::vec2(1, 2)},       {AttrType::Vec3, AttrData::vec3(1, 2, 3)},
        {AttrType::Vec4, AttrData::vec4(1, 2, 3, 4)}, {AttrType::Pos2, AttrData::pos2(1, 2)},
        {AttrType::Pos3, AttrData::pos3(1, 2, 3)},    {AttrType::Quat, AttrData::quat(1, 2, 3, 4)},
        {AttrType::Rgba, AttrData::rgba(1, 2, 3, 4)}, {AttrType::Mat3, AttrData::mat3(std::span(numbers).first<9>())},
        {AttrType::Mat4, AttrData::mat4(numbers)},
    };
    for (const auto& [type, data] : made)
        EXPECT_EQ(data, AttrData::numbers(type, numbers)) << attrTypeName(type);
    EXPECT_EQ(AttrData::rgba(1, 2, 3).components()[3], 1) << "opaque";
}

TEST(AttrData, resizesBuffersInPlace) {
    AttrData data = AttrData::buffer(DataType::Vec2f, 2);
    std::ranges::fill(data.elements<float>(), 7.0F);
    const auto expect = [&](std::vector<float> expected) {
        const auto numbers = data.elements<float>();
        EXPECT_EQ(std::vector<float>(numbers.begin(), numbers.end()), expected);
        EXPECT_EQ(data.count(), expected.size() / 2);
    };
    data.resize(3);
    expect({7, 7, 7, 7, 0, 0});
    data.resize(1);
    expect({7, 7});
    data.resize(2);
    expect({7, 7, 0, 0});
    data.resize(0);
    expect({});
    EXPECT_EQ(data, AttrData::buffer(DataType::Vec2f));
    data.resize(1);
    expect({0, 0});
    EXPECT_THROW(data.resize(u64(1) << 62), std::bad_alloc);
    EXPECT_THROW(data.resize(~u64(0)), std::bad_alloc);
    expect({0, 0});
    const AttrData untouched[] = {AttrData::buffer(DataType::Null), AttrData::string("text"), AttrData::integer(5), {}};
    for (const AttrData& each : untouched) {
        AttrData resized = each;
        resized.resize(9);
        EXPECT_EQ(resized, each);
    }
}

// Strings of up to 31 bytes and four reals are stored inside the value, others in a block.
TEST(AttrData, copiesAndMovesWhatItHoldsInside) {
    for (const std::size_t length : {0U, 1U, 15U, 16U, 30U, 31U, 32U, 33U, 100U}) {
        const std::string text(length, 'x');
        AttrData first = AttrData::string(text);
        const AttrData copy = first;
        EXPECT_STREQ(copy.asString(), text.c_str());
        EXPECT_EQ(copy, first);
        EXPECT_FALSE(copy == AttrData::string(text + "y"));
        const AttrData moved = std::move(first);
        EXPECT_STREQ(moved.asString(), text.c_str());
        EXPECT_NE(moved.asString(), copy.asString()) << "a copy is deep";
    }
    EXPECT_EQ(AttrData::zero(AttrType::String), AttrData::string(""));
}

TEST(AttrData, copiesItsNumbers) {
    std::vector<double> numbers(20);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = static_cast<double>(i) + 0.5;
    for (i32 i = 0; i < attrTypeCount; ++i) {
        const auto type = static_cast<AttrType>(i);
        const AttrData data = AttrData::numbers(type, numbers);
        const AttrData copy = data;
        EXPECT_EQ(data.type(), type);
        ASSERT_EQ(copy.components().size(), componentCount(type)) << attrTypeName(type);
        for (std::size_t k = 0; k < componentCount(type); ++k)
            EXPECT_EQ(copy.components()[k], numbers[k]) << attrTypeName(type);
        EXPECT_EQ(copy, data);
    }
    const AttrData few = AttrData::numbers(AttrType::Mat3, std::span(numbers).first(2));
    EXPECT_EQ(few.components()[1], 1.5);
    EXPECT_EQ(few.components()[2], 0) << "missing numbers are zero";
}

TEST(AttrData, hasAZeroForEachType) {
    for (i32 i = 0; i < attrTypeCount; ++i) {
        const auto type = static_cast<AttrType>(i);
        const AttrData zero = AttrData::zero(type);
        EXPECT_EQ(zero.type(), type);
        EXPECT_EQ(zero.components().size(), componentCount(type));
        for (const double component : zero.components())
            EXPECT_EQ(component, 0);
        EXPECT_STREQ(zero.asString(), "");
        EXPECT_EQ(zero.count(), 0U);
        EXPECT_EQ(zero.dataType(), DataType::Null);
        EXPECT_EQ(zero.elementType(), AttrType::Null);
    }
}

TEST(AttrData, copiesDeeplyAndMovesWithoutCopying) {
    AttrData vector = AttrData::zero(AttrType::Vec3);
    vector.components()[1] = 7;
    AttrData buffer = AttrData::buffer(DataType::Float, 3);
    buffer.elements<float>()[2] = 9;
    for (AttrData* data : {&vector, &buffer}) {
        const AttrData copy = *data;
        EXPECT_EQ(copy, *data);
        const std::byte* block = data->bytes().data();
        const AttrData moved = std::move(*data);
        EXPECT_EQ(moved, copy);
        EXPECT_EQ(moved.bytes().data(), block);
        EXPECT_EQ(data->type(), AttrType::Null);
    }
    AttrData assigned = AttrData::string("old");
    const AttrData* self = &assigned;
    assigned = *self;
    EXPECT_STREQ(assigned.asString(), "old");
    assigned = AttrData::real(1);
    EXPECT_EQ(assigned.type(), AttrType::Real);
}

TEST(AttrData, comparesValues) {
    EXPECT_EQ(AttrData::string("a"), AttrData::string("a"));
    EXPECT_FALSE(AttrData::string("a") == AttrData::string("b"));
    EXPECT_FALSE(AttrData::string("a") == AttrData::string("ab"));
    EXPECT_FALSE(AttrData::integer(0) == AttrData::unsignedInteger(0));
    EXPECT_FALSE(AttrData::boolean(true) == AttrData::boolean(false));
    EXPECT_FALSE(AttrData::buffer(DataType::Float) == AttrData::buffer(DataType::Double));
    EXPECT_EQ(AttrData::buffer(DataType::Float), AttrData::buffer(DataType::Float));
}

TEST(AttrData, showsBuffersAsTypedSpans) {
    AttrData data = AttrData::buffer(DataType::Vec3f, 2);
    EXPECT_EQ(data.elements<float>().size(), 6U);
    data.elements<float>()[4] = 5;
    const auto vectors = std::as_const(data).elements<math::VecT<3, float>>();
    ASSERT_EQ(vectors.size(), 2U);
    EXPECT_EQ(vectors[1][1], 5);
    EXPECT_TRUE(data.elements<double>().empty());
    EXPECT_TRUE(data.elements<i32>().empty());
    EXPECT_TRUE((data.elements<math::VecT<2, float>>().empty()));
    EXPECT_TRUE((data.elements<math::VecT<3>>().empty()));
    EXPECT_EQ(AttrData::buffer(DataType::Rgba8, 3).elements<u8>().size(), 12U);
    EXPECT_EQ((AttrData::buffer(DataType::Mat4d, 3).elements<math::MatT<4>>().size()), 3U);
}

static AttrData threeFloats() {
    AttrData data = AttrData::buffer(DataType::Float, 3);
    std::ranges::copy(std::array{1.0F, 2.0F, 3.0F}, data.elements<float>().begin());
    return data;
}

static std::vector<float> floatsOf(const AttrData& data) {
    const auto numbers = data.elements<float>();
    return {numbers.begin(), numbers.end()};
}

static const std::byte* addressOf(const AttrData& data) { return data.bytes().data(); }

TEST(AttrData, sharesItsBlock) {
    AttrData data = threeFloats();
    const std::byte* const block = addressOf(data);
    const AttrData view = data.share();
    const AttrData again = data.share();
    const AttrData copy = view;
    AttrData assigned = AttrData::string("a text that is not short, in a block of its own");
    assigned = copy;
    const AttrData moved = std::move(assigned);
    for (const AttrData* each : std::initializer_list<const AttrData*>{&data, &view, &again, &copy, &moved}) {
        EXPECT_EQ(addressOf(*each), block);
        EXPECT_EQ(*each, threeFloats());
        EXPECT_EQ(each->count(), 3U);
    }
    EXPECT_EQ(addressOf(assigned), nullptr);
    data = AttrData();
    EXPECT_EQ(floatsOf(view), (std::vector<float>{1, 2, 3})) << "a view keeps the block";
    EXPECT_NE(addressOf(threeFloats()), block);
}

// What each way to write leaves in the value.
static const std::pair<std::function<void(AttrData&)>, std::vector<float>> writes[] = {
    {[](AttrData& data) { std::ranges::fill(data.bytes().first(4), std::byte{0}); }, {0, 2, 3}},
    {[](AttrData& data) { data.elements<float>()[1] = 7; }, {1, 7, 3}},
    {[](AttrData& data) { data.resize(2); }, {1, 2}},
    {[](AttrData& data) { data.resize(5); }, {1, 2, 3, 0, 0}},
    {[](AttrData& data) { data.resize(0); }, {}},
    {[](AttrData& data) { data = AttrData::buffer(DataType::Float, 1); }, {0}},
};

TEST(AttrData, isWrittenInABlockOfItsOwn) {
    for (const auto& [write, expected] : writes) {
        AttrData data = threeFloats();
        const AttrData view = data.share();
        AttrData second = view;
        const std::byte* const block = addressOf(data);
        for (AttrData* each : {&data, &second}) {
            write(*each);
            EXPECT_EQ(floatsOf(*each), expected);
            EXPECT_NE(addressOf(*each), block);
            EXPECT_EQ(floatsOf(view), (std::vector<float>{1, 2, 3}));
            EXPECT_EQ(addressOf(view), block);
        }
    }
}

TEST(AttrData, isWrittenInPlaceByItsLastOwner) {
    AttrData data = threeFloats();
    const std::byte* const block = addressOf(data);
    {
        const AttrData view = data.share();
        const AttrData second = view;
    }
    data.elements<float>()[0] = 9;
    EXPECT_EQ(addressOf(data), block);
    AttrData last = data.share();
    data = AttrData();
    last.elements<float>()[1] = 8;
    EXPECT_EQ(addressOf(last), block);
    EXPECT_EQ(floatsOf(last), (std::vector<float>{9, 8, 3}));
    const AttrData copy = last;
    EXPECT_NE(addressOf(copy), block) << "no longer shared, so that a copy is deep";
}

TEST(AttrData, goesOnSharingIfElementsOfAnotherTypeAreWanted) {
    AttrData data = threeFloats();
    const AttrData view = data.share();
    EXPECT_TRUE(data.elements<double>().empty());
    EXPECT_TRUE(data.elements<i32>().empty());
    EXPECT_TRUE((data.elements<math::VecT<3, float>>().empty()));
    EXPECT_EQ(addressOf(data), addressOf(view));
}

TEST(AttrData, sharesOnlyBlocksOfBuffers) {
    const AttrData values[] = {
        {},
        AttrData::integer(5),
        AttrData::string("short"),
        AttrData::string("a text that is not short, in a block of its own"),
        AttrData::numbers(AttrType::Mat4, std::array{1.0, 2.0}),
        AttrData::zero(AttrType::Mat3),
        AttrData::buffer(DataType::Float),
        AttrData::buffer(DataType::Null, 3),
        AttrData::array(AttrType::Int),
    };
    for (const AttrData& value : values) {
        AttrData view = value.share();
        EXPECT_EQ(view, value) << attrTypeName(value.type());
        view.resize(2);
        if (!view.components().empty()) {
            view.components()[0] = 77;
            EXPECT_NE(value.components()[0], 77);
        }
        EXPECT_EQ(value.count(), value.share().count());
    }
    EXPECT_NE(values[3].share().asString(), values[3].asString());
}

TEST(AttrData, adoptsMemory) {
    for (const auto& [write, expected] : writes) {
        auto numbers = std::make_shared<std::vector<float>>(std::vector<float>{1, 2, 3});
        {
            AttrData data = AttrData::adopt(DataType::Float, 3, numbers->data(), numbers);
            EXPECT_EQ(numbers.use_count(), 2);
            EXPECT_EQ(data.elements<float>().size(), 3U);
        }
        EXPECT_EQ(numbers.use_count(), 1);
        AttrData data = AttrData::adopt(DataType::Float, 3, numbers->data(), numbers);
        EXPECT_EQ(std::as_const(data).elements<float>().data(), numbers->data());
        EXPECT_EQ(data, threeFloats());
        AttrData view = data.share();
        AttrData copy = data;
        EXPECT_EQ(addressOf(view), addressOf(data));
        EXPECT_EQ(addressOf(copy), addressOf(data));
        write(data);
        EXPECT_EQ(floatsOf(data), expected);
        view = AttrData();
        EXPECT_EQ(numbers.use_count(), 2);
        write(copy);
        EXPECT_EQ(floatsOf(copy), expected) << "the last owner does not write to adopted memory either";
        EXPECT_EQ(*numbers, (std::vector<float>{1, 2, 3}));
        EXPECT_EQ(numbers.use_count(), 1) << "no value needs it";
    }
    static const u16 forever[] = {5, 6};
    EXPECT_EQ(AttrData::adopt(DataType::UInt16, 2, forever, nullptr).elements<u16>()[1], 6);
}

// Memory at an odd address is copied, unless the components are bytes.
TEST(AttrData, adoptsOnlyWhatIsAligned) {
    const auto bytes = std::make_shared<std::array<u64, 40>>();
    const char* const start = reinterpret_cast<const char*>(bytes->data());
    for (i32 i = 0; i < dataTypeCount; ++i) {
        const auto type = static_cast<DataType>(i);
        const u32 size = elementLayout(type).componentSize;
        for (u32 offset = 0; offset < 8; ++offset) {
            const AttrData data = AttrData::adopt(type, 2, start + offset, bytes);
            const bool adopts = size != 0 && offset % size == 0;
            EXPECT_EQ(bytes.use_count(), adopts ? 2 : 1) << dataTypeName(type) << offset;
            EXPECT_EQ(addressOf(data) == reinterpret_cast<const std::byte*>(start + offset), adopts);
            EXPECT_EQ(data, AttrData::buffer(type, 2));
        }
        const AttrData empty = AttrData::adopt(type, 0, nullptr, bytes);
        EXPECT_EQ(empty, AttrData::buffer(type));
        EXPECT_EQ(bytes.use_count(), 1);
    }
    std::ranges::fill(*bytes, 0x0102030405060708U);
    const AttrData copied = AttrData::adopt(DataType::UInt16, 2, start + 1, bytes);
    EXPECT_EQ(std::memcmp(copied.bytes().data(), start + 1, 4), 0);
}

} // namespace vrn::test

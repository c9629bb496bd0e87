#include "impl/TypeRules.h"
#include "tests/support/Reading.h"

#include <limits>

namespace vrn::test {

// Rows are value types, columns input types, in the order of AttrType: `=` same, `+` converted, `!` narrowed with a
// warning, `.` rejected.
static const char* const matrix[attrTypeCount] = {
    //                 NBIURvvvppqrmmSNBAO
    /* Null   */ "=..................",
    /* Bool   */ ".=+++..............",
    /* Int    */ ".!=++..............",
    /* UInt   */ ".!+=+..............",
    /* Real   */ "..!!=+++++++.......",
    /* Vec2   */ ".....=++++++.......",
    /* Vec3   */ ".....!=+!+++.......",
    /* Vec4   */ ".....!!=!!++.......",
    /* Pos2   */ ".....+++=+++.......",
    /* Pos3   */ ".....!++!=++.......",
    /* Quat   */ ".....!!+!!=+.......",
    /* Rgba   */ ".....!!+!!+=.......",
    /* Mat3   */ "............=+.....",
    /* Mat4   */ "............!=.....",
    /* String */ "..............=....",
    /* Node   */ "...............=...",
    /* Buffer */ "................=..",
    /* Array  */ ".................=.",
    /* Object */ "..................=",
};

TEST(TypeRules, decideEveryPair) {
    for (i32 value = 0; value < attrTypeCount; ++value)
        for (i32 input = 0; input < attrTypeCount; ++input) {
            const Fit expected = matrix[value][input] == '='   ? Fit::Same
                                 : matrix[value][input] == '+' ? Fit::Converted
                                 : matrix[value][input] == '!' ? Fit::Narrowed
                                                               : Fit::Rejected;
            EXPECT_EQ(fit(static_cast<AttrType>(value), static_cast<AttrType>(input)), expected)
                << attrTypeName(static_cast<AttrType>(value)) << " into " << attrTypeName(static_cast<AttrType>(input));
        }
}

// The same matrix from texts: compares the log and the type of the input afterwards.
TEST(TypeRules, decideWhatAnAssignmentLogs) {
    const char* literals[attrTypeCount] = {nullptr,
                                           "true",
                                           "2",
                                           "3u",
                                           "4.5",
                                           "vec2(1 2)",
                                           "vec3(1 2 3)",
                                           "vec4(1 2 3 4)",
                                           "pos2(1 2)",
                                           "pos3(1 2 3)",
                                           "quat(1 2 3 4)",
                                           "rgba(1 2 3 4)",
                                           "mat3(1 2 3 4 5 6 7 8 9)",
                                           "mat4(1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16)",
                                           "\"s\"",
                                           nullptr,
                                           "int32[1] {7}",
                                           "[]",
                                           "{}"};
    for (i32 v = 1; v < attrTypeCount; ++v) {
        if (!literals[v])
            continue; // nodes are linked, not written
        for (i32 i = 0; i < attrTypeCount; ++i) {
            const auto valueType = static_cast<AttrType>(v);
            const auto inputType = static_cast<AttrType>(i);
            Reading r;
            Input* input = r.scene->createNode("t", "n")->createInput("x", inputType);
            readMore(r, "n.x = " + String(literals[v]) + ";");
            EXPECT_TRUE(r.isOk);
            const String at = String::format("(1,%zu)", 7 + strlen(literals[v]));
            const char* value = attrTypeName(valueType);
            const char* type = attrTypeName(inputType);
            std::vector<String> texts;
            // An untyped buffer accepts buffers and refuses all other values.
            if (matrix[v][i] == '.')
                texts.push_back(
                    String::format("TYPE ERROR %s: expected %s @ n.x but found %s.", at.buf(), type, value));
            if (matrix[v][i] == '!')
                texts.push_back(String::format("TYPE WARNING %s: narrowing %s to %s @ n.x.", at.buf(), value, type));
            std::vector<String> logged;
            for (const LogRecord& record : r.log)
                logged.push_back(record.text);
            EXPECT_EQ(logged, texts) << value << " into " << type;
            EXPECT_EQ(input->type(), inputType == AttrType::Null ? valueType : inputType) << value << " into " << type;
        }
    }
}

TEST(TypeRules, convert) {
    const auto vector = [](AttrType type, std::vector<double> components) {
        AttrData data = AttrData::zero(type);
        std::ranges::copy(components, data.components().begin());
        return data;
    };
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    using A = AttrType;
    const struct {
        AttrData from;
        AttrData to;
    } cases[] = {
        {AttrData::boolean(true), AttrData::integer(1)},
        {AttrData::boolean(false), AttrData::unsignedInteger(0)},
        {AttrData::boolean(true), AttrData::real(1)},
        {AttrData::integer(-2), AttrData::boolean(true)},
        {AttrData::integer(0), AttrData::boolean(false)},
        {AttrData::unsignedInteger(3), AttrData::boolean(true)},
        {AttrData::integer(-2), AttrData::unsignedInteger(~u64(1))},
        {AttrData::unsignedInteger(~u64(0)), AttrData::integer(-1)},
        {AttrData::integer(-2), AttrData::real(-2)},
        {AttrData::unsignedInteger(~u64(0)), AttrData::real(18446744073709551616.0)},
        {AttrData::real(2.9), AttrData::integer(2)},
        {AttrData::real(-2.9), AttrData::integer(-2)},
        {AttrData::real(inf), AttrData::integer(INT64_MAX)},
        {AttrData::real(-inf), AttrData::integer(INT64_MIN)},
        {AttrData::real(9223372036854775807.0), AttrData::integer(INT64_MAX)},
        {AttrData::real(9223372036854774784.0), AttrData::integer(9223372036854774784)},
        {AttrData::real(-9223372036854775808.0), AttrData::integer(INT64_MIN)},
        {AttrData::real(nan), AttrData::integer(0)},
        {AttrData::real(-1), AttrData::unsignedInteger(0)},
        {AttrData::real(-0.5), AttrData::unsignedInteger(0)},
        {AttrData::real(1e300), AttrData::unsignedInteger(UINT64_MAX)},
        {AttrData::real(18446744073709549568.0), AttrData::unsignedInteger(18446744073709549568U)},
        {AttrData::real(nan), AttrData::unsignedInteger(0)},
        {AttrData::real(5), vector(A::Vec2, {5, 5})},
        {AttrData::real(5), vector(A::Quat, {5, 5, 5, 5})},
        {AttrData::real(5), vector(A::Rgba, {5, 5, 5, 1})},
        {vector(A::Vec2, {1, 2}), vector(A::Vec4, {1, 2, 0, 0})},
        {vector(A::Vec2, {1, 2}), vector(A::Pos2, {1, 2})},
        {vector(A::Pos2, {1, 2}), vector(A::Rgba, {1, 2, 0, 1})},
        {vector(A::Vec3, {1, 2, 3}), vector(A::Rgba, {1, 2, 3, 1})},
        {vector(A::Vec4, {1, 2, 3, 4}), vector(A::Rgba, {1, 2, 3, 4})},
        {vector(A::Rgba, {1, 2, 3, 4}), vector(A::Vec2, {1, 2})},
        {vector(A::Quat, {1, 2, 3, 4}), vector(A::Pos3, {1, 2, 3})},
        {vector(A::Mat3, {1, 2, 3, 4, 5, 6, 7, 8, 9}),
         vector(A::Mat4, {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 1})},
        {vector(A::Mat4, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}),
         vector(A::Mat3, {1, 2, 3, 5, 6, 7, 9, 10, 11})},
    };
    for (const auto& c : cases)
        EXPECT_EQ(convert(c.from, c.to.type()), c.to)
            << attrTypeName(c.from.type()) << " to " << attrTypeName(c.to.type());
}

} // namespace vrn::test

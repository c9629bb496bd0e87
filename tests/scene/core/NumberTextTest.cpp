#include "scene/core/NumberText.h"
#include "tests/support/Reading.h"

#include <bit>
#include <cmath>
#include <random>

namespace vrn::test {

template <class Integer>
static std::optional<Integer> integer(const char* text, String::Radix radix = String::Radix::Auto) {
    Integer value = 77;
    if (String::parse(text, value, radix))
        return value;
    EXPECT_EQ(value, Integer(77)) << text << ": a failure leaves the target alone";
    return std::nullopt;
}

template <class Real> static std::optional<Real> real(std::string_view text) {
    Real value = 77;
    if (String::parse(text, value))
        return value;
    EXPECT_EQ(value, Real(77)) << text;
    return std::nullopt;
}

TEST(Integers, areReadInEveryForm) {
    const struct {
        const char* text;
        std::optional<i64> value;
    } cases[] = {
        {"0", 0},
        {"-0", 0},
        {"+7", 7},
        {"-7", -7},
        {"007", 7},
        {" \t42\r\n", 42},
        {"42u", 42},
        {"42U", 42},
        {"42uu", {}},
        {"u", {}},
        {"1e5", 100000},
        {"1E+5", 100000},
        {"1e-5", {}},
        {"1e", {}},
        {"1e+", {}},
        {"0e999", 0},
        {"1e19", {}},
        {"9e18", 9000000000000000000},
        {"1e99999999999999999999", {}},
        {"0x1F", 31},
        {"0Xff", 255},
        {"-0x10", -16},
        {"0x", {}},
        {"0xG", {}},
        {"0b101", 5},
        {"0B1", 1},
        {"0b2", {}},
        {"0b", {}},
        {"0x10u", 16},
        {"", {}},
        {"-", {}},
        {"+", {}},
        {" ", {}},
        {"1 2", {}},
        {"1.0", {}},
        {"1-2", {}},
        {"--1", {}},
        {"a", {}},
        {"1e5u", 100000},
        {"9223372036854775807", INT64_MAX},
        {"9223372036854775808", {}},
        {"-9223372036854775808", INT64_MIN},
        {"-9223372036854775809", {}},
        {"99999999999999999999999", {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(integer<long long>(c.text), c.value ? std::optional<long long>(*c.value) : std::nullopt) << c.text;
}

TEST(Integers, keepToTheirRange) {
    EXPECT_EQ(integer<i8>("-128"), i8(-128));
    EXPECT_EQ(integer<i8>("127"), i8(127));
    EXPECT_FALSE(integer<i8>("128"));
    EXPECT_FALSE(integer<i8>("-129"));
    EXPECT_EQ(integer<u8>("255"), u8(255));
    EXPECT_FALSE(integer<u8>("256"));
    EXPECT_FALSE(integer<u8>("-0")) << "no minus sign before an unsigned number";
    EXPECT_EQ(integer<i16>("-32768"), i16(-32768));
    EXPECT_FALSE(integer<i16>("32768"));
    EXPECT_EQ(integer<u16>("65535"), u16(65535));
    EXPECT_FALSE(integer<u16>("65536"));
    EXPECT_EQ(integer<i32>("-2147483648"), INT32_MIN);
    EXPECT_FALSE(integer<i32>("2147483648"));
    EXPECT_EQ(integer<u32>("4294967295"), UINT32_MAX);
    EXPECT_FALSE(integer<u32>("4294967296"));
    EXPECT_EQ(integer<unsigned long long>("18446744073709551615"), UINT64_MAX);
    EXPECT_FALSE(integer<unsigned long long>("18446744073709551616"));
    EXPECT_EQ(integer<long>("-5"), -5L);
    EXPECT_EQ(integer<unsigned long>("5"), 5UL);
}

TEST(Integers, areReadInAGivenBase) {
    EXPECT_EQ(integer<i32>("1F", String::Radix::Hexadecimal), 31);
    EXPECT_EQ(integer<i32>("101", String::Radix::Binary), 5);
    EXPECT_EQ(integer<i32>("101", String::Radix::Decimal), 101);
    EXPECT_FALSE(integer<i32>("0x1F", String::Radix::Decimal));
    EXPECT_FALSE(integer<i32>("2", String::Radix::Binary));
}

TEST(Booleans, areWordsOrDigits) {
    const struct {
        const char* text;
        std::optional<bool> value;
    } cases[] = {{"true", true},   {"TRUE", true}, {"FaLsE", false}, {"1", true}, {"0", false},
                 {" true ", true}, {"2", {}},      {"yes", {}},      {"", {}}};
    for (const auto& c : cases) {
        bool value = false;
        const bool isRead = String::parse(c.text, value);
        EXPECT_EQ(isRead ? std::optional<bool>(value) : std::nullopt, c.value) << c.text;
    }
}

TEST(Reals, areReadInEveryForm) {
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char* text;
        std::optional<double> value;
    } cases[] = {
        {"0", 0.0},
        {"1", 1.0},
        {"1.", 1.0},
        {".5", 0.5},
        {"-.5", -0.5},
        {"+1.5", 1.5},
        {" 2.5\t", 2.5},
        {"1e3", 1000.0},
        {"1E-3", 0.001},
        {"1.5e+2", 150.0},
        {"1f", 1.0},
        {"1.F", 1.0},
        {"1e2f", 100.0},
        {"inf", inf},
        {"-INF", -inf},
        {"+Inf", inf},
        {"inff", {}},
        {"nanf", {}},
        {"infinity", {}},
        {"nan(1)", {}},
        {"", {}},
        {".", {}},
        {"-", {}},
        {"e5", {}},
        {"1e", {}},
        {"1e+", {}},
        {"1ff", {}},
        {"1.2.3", {}},
        {"0x10", {}},
        {"1 2", {}},
        {"f", {}},
        {".f", {}},
        {"1e400", inf},
        {"-1e400", -inf},
        {"1e-400", 0.0},
        {"1e99999999999999999999", inf},
        {"1e-99999999999999999999", 0.0},
        {"0e99999999999999999999", 0.0},
        {"4.9406564584124654e-324", 5e-324},
        {"2.4703282292062327e-324", 0.0},
        {"2.2250738585072011e-308", 2.2250738585072011e-308},
        {"9007199254740993", 9007199254740992.0},
        {"9007199254740993.00000000000000000000000001", 9007199254740994.0},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"1.7976931348623159e308", inf},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(real<double>(c.text), c.value) << c.text;
    EXPECT_TRUE(std::isnan(*real<double>("NaN")));
    EXPECT_TRUE(std::signbit(*real<double>("-0")));
    EXPECT_TRUE(std::signbit(*real<double>("-nan")));
}

TEST(Reals, areRoundedOnceToFloat) {
    // Halfway between two floats except for a digit beyond the precision of a double.
    EXPECT_EQ(real<float>("1.00000005960464477539062500000000001"), std::nextafter(1.0F, 2.0F));
    EXPECT_EQ(real<float>("1.000000059604644775390625"), 1.0F) << "ties go to even";
    EXPECT_EQ(real<float>("16777217"), 16777216.0F);
    EXPECT_EQ(real<float>("3.4028235677973366e38"), std::numeric_limits<float>::max()) << "just below halfway";
    EXPECT_EQ(real<float>("3.4028235677973367e38"), std::numeric_limits<float>::infinity());
    EXPECT_EQ(real<float>("3.4028235e38"), std::numeric_limits<float>::max());
    EXPECT_EQ(real<float>("1e-46"), 0.0F);
    EXPECT_EQ(real<float>("1.4e-45"), std::numeric_limits<float>::denorm_min());
}

// The C library rounds correctly as well; the tests run in the C locale.
template <class Real, class Bits> static void compareWithC(Real (*reference)(const char*, char**)) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        const Real value = std::bit_cast<Real>(static_cast<Bits>(random()));
        if (!std::isfinite(value))
            continue;
        char shortest[realTextCapacity];
        const std::string text(writeReal(value, shortest));
        const std::optional<Real> back = real<Real>(text);
        ASSERT_TRUE(back && std::bit_cast<Bits>(*back) == std::bit_cast<Bits>(value)) << text;
        char digits[64];
        std::snprintf(digits, sizeof digits, "%.*e", static_cast<int>(random() % 25), static_cast<double>(value));
        ASSERT_EQ(*real<Real>(digits), reference(digits, nullptr)) << digits;
        std::snprintf(digits, sizeof digits, "%lu.%lu", random() % 100000, random() >> (random() % 60));
        ASSERT_EQ(*real<Real>(digits), reference(digits, nullptr)) << digits;
    }
}

TEST(Reals, agreeWithTheCLibrary) {
    compareWithC<double, u64>(std::strtod);
    compareWithC<float, u32>(std::strtof);
}

TEST(Reals, areWrittenAsTheShortestTextThatReadsBack) {
    char buffer[realTextCapacity];
    EXPECT_EQ(writeReal(0.1, buffer), "0.1");
    EXPECT_EQ(writeReal(0.1F, buffer), "0.1");
    EXPECT_EQ(writeReal(5.0, buffer), "5");
    EXPECT_EQ(writeReal(-0.0, buffer), "-0");
    EXPECT_EQ(writeReal(1e300, buffer), "1e+300");
    EXPECT_EQ(writeReal(-std::numeric_limits<double>::infinity(), buffer), "-inf");
    EXPECT_EQ(writeReal(-std::numeric_limits<double>::quiet_NaN(), buffer), "nan");
    EXPECT_EQ(writeReal(-2.2250738585072014e-308, buffer), "-2.2250738585072014e-308");
}

} // namespace vrn::test

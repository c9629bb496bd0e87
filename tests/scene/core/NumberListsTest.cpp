#include "scene/core/NumberLists.h"

#include "scene/core/NumberText.h"
#include "tests/support/InstructionSets.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace vrn::test {

namespace {

template <class Number> std::vector<std::string> textsOf(const std::vector<Number>& numbers) {
    std::vector<char> characters(numbers.size() * listNumberCapacity + listSlack);
    const char* end = writeNumberList(std::span<const Number>(numbers), characters.data());
    std::string_view list(characters.data(), static_cast<std::size_t>(end - characters.data()));
    std::vector<std::string> texts;
    for (std::size_t length = 0; !list.empty(); list.remove_prefix(length + 1)) {
        length = list.find(' ');
        texts.emplace_back(list.substr(0, length));
    }
    EXPECT_EQ(texts.size(), numbers.size());
    return texts;
}

// The digits without the zeros on either side.
std::string digitsOf(std::string_view text) {
    std::string digits;
    for (const char c : text.substr(0, text.find('e')))
        if (c >= '0' && c <= '9')
            digits += c;
    digits.erase(0, digits.find_first_not_of('0'));
    return digits.substr(0, digits.find_last_not_of('0') + 1);
}

// All texts read back as the number, bit for bit, and those of numbers that may have a fraction have the same digits as
// writeReal() returns.
template <class Real, class Bits> void expectRealsReadBack(std::vector<Real> numbers) {
    const double end = sizeof(Real) == sizeof(float) ? 0x1p24 : 0x1p53;
    // A number that needs the general path takes its whole group there.
    std::partition(numbers.begin(), numbers.end(), [end](Real number) {
        const double magnitude = std::abs(static_cast<double>(number));
        return magnitude == 0 || (magnitude >= 0x1p-17 && magnitude < end);
    });
    limitInstructionSet(InstructionSet::Baseline);
    const std::vector<std::string> expected = textsOf(numbers);
    withEachSet([&] {
        const std::vector<std::string> texts = textsOf(numbers);
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            ASSERT_EQ(texts[i], expected[i]);
            Real back = 0;
            ASSERT_TRUE(parseReal(texts[i], back)) << texts[i];
            ASSERT_EQ(std::bit_cast<Bits>(back), std::bit_cast<Bits>(numbers[i])) << texts[i];
            char buffer[realTextCapacity];
            if (std::abs(static_cast<double>(numbers[i])) < end) {
                ASSERT_EQ(digitsOf(texts[i]), digitsOf(writeReal(numbers[i], buffer))) << texts[i];
            }
        }
    });
}

template <class Integer> void expectIntegers() {
    using Limits = std::numeric_limits<Integer>;
    std::vector<Integer> numbers{Limits::min(), Limits::max(), 0};
    std::mt19937_64 random(1);
    for (u64 power = 1; power < u64(Limits::max()) / 10; power *= 10)
        for (const u64 number : {power - 1, power, power + 1, 0 - power, power * 7})
            numbers.push_back(static_cast<Integer>(number));
    for (int i = 0; i < 1000; ++i)
        numbers.push_back(static_cast<Integer>(random() >> random() % 64));
    withEachSet([&] {
        const std::vector<std::string> texts = textsOf(numbers);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            ASSERT_EQ(texts[i], std::to_string(numbers[i]));
        for (const Integer number : numbers) // in a group without others that need the general path
            ASSERT_EQ(textsOf(std::vector<Integer>(16, number)), std::vector(16, std::to_string(number)));
    });
}

// Numbers of the fast and of the general path next to each other, in lists of all lengths.
template <class Number> void expectMixtures(Number common, std::initializer_list<Number> rare) {
    for (const Number number : rare)
        for (std::size_t count = 0; count < 40; ++count)
            for (std::size_t at = 0; at < count; at += 3) {
                std::vector<Number> numbers(count, common);
                numbers[at] = number;
                std::vector<std::string> texts(count, textsOf<Number>({common})[0]);
                texts[at] = textsOf<Number>({number})[0];
                ASSERT_EQ(textsOf(numbers), texts) << number << " at " << at;
            }
}

} // namespace

TEST(NumberLists, fewAmongMany) {
    withEachSet([] {
        expectMixtures<float>(-1.5F, {0.0F, -0.0F, 1e-5F, 1e-4F, 16777216, 1e30F, std::nanf("")});
        expectMixtures<double>(-1.5, {0.0, -0.0, 1e-6, 1e-5, 0x1p53, 1e300, std::nan("")});
        expectMixtures<i32>(-7, {0, 999999, 1000000, 2147483647, -2147483648});
        expectMixtures<i64>(-7, {0, 1000000, 99999999999999, 100000000000000, std::numeric_limits<i64>::min()});
    });
}

// AVX-512 writes groups of eight, doubles from batches of 32 decimals, and falls back for groups of 16 without it:
// lists that fill one or more of these exactly, and one number less and more. Any number may need the general path.
TEST(NumberLists, endNextToTheEndOfAGroup) {
    const auto expectCounts = [](auto number, auto general) {
        using Number = decltype(number);
        for (const std::size_t full : {8U, 16U, 32U, 64U, 96U})
            for (const std::size_t count : {full - 1, full, full + 1}) {
                std::vector<Number> numbers;
                std::vector<std::string> texts;
                for (std::size_t i = 0; i < count; ++i) {
                    numbers.push_back(number * static_cast<Number>(i * i + 1));
                    texts.push_back(textsOf<Number>({numbers.back()})[0]);
                }
                ASSERT_EQ(textsOf(numbers), texts) << count;
                for (std::size_t at = 0; at < count; ++at) {
                    const Number kept = std::exchange(numbers[at], general);
                    const std::string keptText = std::exchange(texts[at], textsOf<Number>({general})[0]);
                    ASSERT_EQ(textsOf(numbers), texts) << "number " << at << " of " << count;
                    numbers[at] = kept;
                    texts[at] = keptText;
                }
            }
    };
    withEachSet([&] {
        expectCounts(0.3125, 1e300);
        expectCounts(0.3125F, 1e30F);
        expectCounts(i32(-7), std::numeric_limits<i32>::min());
        expectCounts(i64(-7), std::numeric_limits<i64>::min());
    });
}

TEST(NumberLists, integersOfAllWidths) {
    expectIntegers<i8>();
    expectIntegers<u8>();
    expectIntegers<i16>();
    expectIntegers<u16>();
    expectIntegers<i32>();
    expectIntegers<u32>();
    expectIntegers<i64>();
    expectIntegers<u64>();
}

TEST(NumberLists, realsAsPeopleWriteThem) {
    const std::vector<std::pair<double, const char*>> cases = {
        {0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-1.5, "-1.5"},
        {0.1, "0.1"},
        {100, "100"},
        {123456, "123456"},
        {0.00001, "0.00001"},
        {0.000007, "7e-06"},
        {0.00002, "0.00002"},
        {0.0625, "0.0625"},
        {9007199254740991.0, "9007199254740991"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), "-nan"},
        {1e300, "1e+300"},
        {5e-324, "5e-324"},
    };
    std::vector<double> numbers;
    for (const auto& [number, text] : cases)
        numbers.push_back(number);
    withEachSet([&] {
        const std::vector<std::string> texts = textsOf(numbers);
        for (std::size_t i = 0; i < cases.size(); ++i)
            EXPECT_EQ(texts[i], cases[i].second);
    });
    EXPECT_EQ(textsOf(std::vector<float>{0.1F, 16777215, 1e-4F, -3.4028235e38F, 1e-45F, 0.3F}),
              (std::vector<std::string>{"0.1", "16777215", "0.0001", "-3.4028235e+38", "1e-45", "0.3"}));
}

TEST(NumberLists, floatsReadBackFromTheFewestDigits) {
    std::vector<float> numbers;
    const u64 step = u64(0xFFFFFFFF) / static_cast<u64>(scaled(430000));
    for (u64 bits = 0; bits <= 0xFFFFFFFF; bits += step)
        if (const auto number = std::bit_cast<float>(static_cast<u32>(bits)); !std::isnan(number))
            numbers.push_back(number);
    for (u32 i = 0; i < 32; ++i) // halfway between two decimals with one place
        numbers.push_back(0x1p21F + 0.25F + 0.5F * static_cast<float>(i));
    for (u32 exponent = 100; exponent < 155; ++exponent) // each power of two and its neighbours
        for (const i32 beside : {-2, -1, 0, 1, 2})
            numbers.push_back(std::bit_cast<float>((exponent << 23) + static_cast<u32>(beside)));
    for (int i = 0; i < scaled(20000); ++i)
        numbers.push_back(static_cast<float>(i) / 1000);
    // Integers four apart: the multiple of ten between two of them is a midpoint, which rounds to the even one.
    for (u32 i = 0; i < 2000; ++i)
        numbers.push_back(static_cast<float>((u32(1) << 25) + 4 * i));
    expectRealsReadBack<float, u32>(numbers);
}

TEST(NumberLists, doublesReadBackFromTheFewestDigits) {
    std::vector<double> numbers;
    std::mt19937_64 random(2);
    for (int i = 0; i < scaled(50000); ++i) {
        const u64 middling = u64(1000 + random() % 80) << 52 | random() >> 12;
        numbers.push_back(std::bit_cast<double>(middling));
        numbers.push_back(static_cast<double>(random() % 100000000) / std::pow(10, random() % 12));
        if (const auto any = std::bit_cast<double>(random()); !std::isnan(any))
            numbers.push_back(any);
    }
    for (u64 exponent = 990; exponent < 1090; ++exponent)
        for (const i64 beside : {-2, -1, 0, 1, 2})
            numbers.push_back(std::bit_cast<double>((exponent << 52) + static_cast<u64>(beside)));
    expectRealsReadBack<double, u64>(numbers);
}

} // namespace vrn::test

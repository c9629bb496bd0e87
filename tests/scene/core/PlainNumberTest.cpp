#include "scene/core/PlainNumber.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"

#include <bit>
#include <random>

namespace vrn::test {

// Everything that the fast path accepts, the general parser accepts with the same result. (A leading blank keeps
// String::parse off the fast path.)
template <class Number> static bool agrees(const std::string& text) {
    for (const char* after : {"", " ", " 12345678", "}      "}) {
        const std::string padded = text + after;
        Number quick = 55;
        const char* end = takePlainNumber(padded.data(), padded.data() + padded.size(), quick);
        Number slow = 55;
        if (!end)
            continue;
        const bool isRead = String::parse(std::string_view(" " + std::string(padded.data(), end)), slow);
        EXPECT_TRUE(isRead) << padded;
        EXPECT_EQ(std::memcmp(&quick, &slow, sizeof slow), 0) << padded << " " << quick << " " << slow;
        EXPECT_GE(static_cast<std::size_t>(end - padded.data()), std::size_t(1));
    }
    return !testing::Test::HasFailure();
}

template <class Number> static bool isTaken(const std::string& text) {
    Number number = 0;
    const char* end = takePlainNumber(text.data(), text.data() + text.size(), number);
    return end == text.data() + text.size();
}

TEST(PlainNumber, agreesWithTheGeneralParser) {
    std::mt19937_64 random(3);
    for (int i = 0; i < scaled(100000); ++i) {
        std::string text = random() % 2 ? "-" : "";
        text += std::to_string(random() >> (random() % 64));
        if (random() % 2)
            text.insert(text.size() - random() % text.size(), ".");
        ASSERT_TRUE(agrees<float>(text) && agrees<double>(text)) << text;
        ASSERT_TRUE(agrees<i8>(text) && agrees<u8>(text) && agrees<i16>(text) && agrees<u16>(text)) << text;
        ASSERT_TRUE(agrees<i32>(text) && agrees<u32>(text) && agrees<i64>(text) && agrees<u64>(text)) << text;
    }
}

TEST(PlainNumber, roundsTiesOfFloats) {
    std::mt19937_64 random(4);
    for (int i = 0; i < scaled(100000); ++i) {
        // At, just below and just above the midpoint of two floats.
        const u32 bits = static_cast<u32>(0x3F800000 + random() % 0x0B000000);
        const double middle =
            (static_cast<double>(std::bit_cast<float>(bits)) + static_cast<double>(std::bit_cast<float>(bits + 1))) / 2;
        char text[64];
        std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random() % 12), middle);
        ASSERT_TRUE(agrees<float>(text)) << text;
    }
}

TEST(PlainNumber, takesWhatIsPlain) {
    for (const char* text : {"0", "-0", "7", "12345678", "1234567890123456", "-12345678", "007"})
        EXPECT_TRUE(isTaken<i64>(text)) << text;
    for (const char* text :
         {"0.5", "-0.0", "1.", ".5", "123456.654321", "0.12345678", "12345678.1234567", "9007199254740992"})
        EXPECT_TRUE(isTaken<double>(text) && (isTaken<float>(text) || text[0] == '9')) << text;
    for (const char* text :
         {"", "-", "+1", ".", "-.", "x", "1e5", "0x1", "1f", "inf", "1.2.3", "123456789012345678901"}) {
        EXPECT_FALSE(isTaken<double>(text)) << text;
        EXPECT_FALSE(isTaken<i64>(text)) << text;
    }
    // The most digits that always fit 64 bits, and one more.
    EXPECT_TRUE(isTaken<i64>("9223372036854775807") && isTaken<i64>("-9223372036854775808"));
    EXPECT_FALSE(isTaken<i64>("9223372036854775808") || isTaken<i64>("-9223372036854775809"));
    EXPECT_TRUE(isTaken<u64>("9999999999999999999") && isTaken<double>("9999999999999999999"));
    EXPECT_TRUE(isTaken<double>("0.123456789012345678") && isTaken<double>(".1234567890123456789"));
    EXPECT_FALSE(isTaken<double>("0.1234567890123456789") || isTaken<u64>("10000000000000000000"));
    EXPECT_TRUE(isTaken<i8>("-128"));
    EXPECT_FALSE(isTaken<i8>("128"));
    EXPECT_FALSE(isTaken<u8>("256"));
    EXPECT_FALSE(isTaken<u8>("-1"));
    EXPECT_FALSE(isTaken<i32>("1.0"));
}

} // namespace vrn::test

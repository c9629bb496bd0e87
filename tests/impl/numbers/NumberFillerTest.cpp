// Compares the block readers of each instruction set with the general parser.
#include "impl/numbers/NumberFiller.h"

#include "tests/support/InstructionSets.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

namespace vrn::test {

namespace {

struct Filled {
    std::vector<std::byte> block;
    std::size_t bytes = 0;
    bool isRead = true;
    std::optional<String> excess;

    friend bool operator==(const Filled&, const Filled&) = default;
};

constexpr std::size_t capacity = 1000; // numbers

template <class Number, class Feed> Filled fill(InstructionSet set, Feed feed) {
    Filled filled;
    filled.block.resize(capacity * sizeof(Number));
    NumberFiller filler = NumberFiller::make<Number>(filled.block, set);
    feed(filler);
    filled.bytes = filler.filledBytes();
    filled.isRead = filler.isRead();
    filled.excess = filler.excess();
    return filled;
}

// The general parser: a leading blank keeps String::parse off the fast path.
template <class Number> bool parseGeneral(const std::string& text, Number& number) {
    return String::parse(std::string_view(" " + text), number);
}

template <class Number> Filled fillGeneral(const std::vector<std::string>& elements) {
    Filled filled;
    filled.block.resize(capacity * sizeof(Number));
    for (const std::string& each : elements) {
        if (filled.bytes == filled.block.size()) {
            filled.excess = String(std::string_view(each));
            break;
        }
        Number number = 0;
        if (parseGeneral(each, number))
            std::memcpy(filled.block.data() + filled.bytes, &number, sizeof number);
        else
            filled.isRead = false;
        filled.bytes += sizeof number;
    }
    return filled;
}

using Random = std::mt19937_64;

std::string digits(Random& random, std::size_t maxCount) {
    std::string text(random() % (maxCount + 1), '0');
    for (char& c : text)
        c = static_cast<char>('0' + random() % 10);
    return text;
}

// A plain number of any length or, with a probability in percent, something else.
std::string element(Random& random, int percentOfOthers) {
    static const char* others[] = {"-",
                                   ".",
                                   "-.",
                                   "1.2.3",
                                   "--1",
                                   "+5",
                                   "1e5",
                                   "1E-3",
                                   "inf",
                                   "-nan",
                                   "1-2",
                                   "5u",
                                   "0b1",
                                   "1f",
                                   "5.",
                                   ".5",
                                   "-.5",
                                   "-0",
                                   "-0.0",
                                   "..",
                                   "a",
                                   "0.1f",
                                   "1.5e3",
                                   "e",
                                   "16777217",
                                   "9007199254740993",
                                   "-2147483648",
                                   "128",
                                   "-128",
                                   "65536",
                                   "-32769",
                                   "18446744073709551615",
                                   "-9223372036854775808",
                                   ".1234567890123456",
                                   "123456789012345678901234567890123456789012345678901234567890123456"};
    if (random() % 100 < static_cast<unsigned>(percentOfOthers))
        return others[random() % std::size(others)];
    const std::size_t maxDigits = random() % 4 == 0 ? 20 : 8;
    std::string text = random() % 4 == 0 ? "-" : "";
    text += std::to_string(random() % 10) + digits(random, random() % maxDigits);
    if (random() % 2)
        text += "." + digits(random, random() % maxDigits);
    return text;
}

std::string separator(Random& random) {
    static const char* all[] = {"\n  ", ",", ", ", "\r\n", " (", ") ", "\x80", "\x7F", "[", "]", "\t", "\xC2\xA0"};
    if (random() % 4 != 0)
        return " ";
    return random() % 50 == 0 ? std::string(random() % 200 + 1, ' ') : all[random() % std::size(all)];
}

template <class Number> void expectSameAsGeneral(Random& random) {
    const std::size_t endOfCounts = random() % 20 == 0 ? capacity + 30 : 200;
    std::vector<std::string> elements(random() % endOfCounts);
    const int percentOfOthers = random() % 2 ? 0 : static_cast<int>(random() % 30);
    std::string text = random() % 2 ? "" : separator(random);
    for (std::string& each : elements) {
        each = element(random, percentOfOthers);
        if (!std::is_floating_point_v<Number> && random() % 8 != 0)
            each = each.substr(0, each.find('.', 1));
        text += each + separator(random);
    }
    if (random() % 2)
        text.erase(text.find_last_not_of(" \n\r\t,()[]\x80\x7F\xC2\xA0") + 1);
    const Filled expected = fillGeneral<Number>(elements);
    const std::size_t piece = random() % 3 == 0 ? text.size() + 1 : random() % 300 + 1;
    for (const InstructionSet set : supportedSets()) {
        const Filled filled = fill<Number>(set, [&](NumberFiller& filler) {
            for (std::size_t at = 0; at < text.size(); at += piece)
                filler.take(std::string_view(text).substr(at, piece));
            filler.finish();
        });
        ASSERT_EQ(filled.bytes, expected.bytes) << static_cast<int>(set) << ": " << text;
        ASSERT_TRUE(filled == expected) << static_cast<int>(set) << " in pieces of " << piece << ": " << text;
    }
}

template <class Number> class NumberFillerOf : public testing::Test {};
using Numbers = testing::Types<i8, u8, i16, u16, i32, u32, i64, u64, float, double>;
TYPED_TEST_SUITE(NumberFillerOf, Numbers, );

} // namespace

TYPED_TEST(NumberFillerOf, agreesWithTheGeneralParser) {
    Random random(11);
    for (int i = 0; i < scaled(3000) && !testing::Test::HasFatalFailure(); ++i)
        expectSameAsGeneral<TypeParam>(random);
}

// Each position in a block, each length of a number.
TYPED_TEST(NumberFillerOf, findsNumbersAtEachPosition) {
    for (std::size_t before = 0; before < 70; ++before)
        for (std::size_t length = 1; length < 20; ++length)
            for (const InstructionSet set : supportedSets()) {
                const std::string number = std::string("12345678901234567890").substr(0, length);
                std::string text(128, ' '); // the first 64 characters are parsed one by one
                text += std::string(before, ' ') + number + std::string(200, ' ');
                TypeParam expected = 0;
                const bool isRead = parseGeneral(number, expected);
                const Filled filled = fill<TypeParam>(set, [&](NumberFiller& filler) {
                    filler.take("1 " + text);
                    filler.finish();
                });
                ASSERT_EQ(filled.isRead, isRead) << number;
                ASSERT_EQ(filled.bytes, 2 * sizeof(TypeParam));
                ASSERT_EQ(std::memcmp(filled.block.data() + sizeof(TypeParam), &expected, sizeof expected), 0)
                    << number;
            }
}

TEST(NumberFiller, roundsFloatsOnce) {
    Random random(12);
    for (int i = 0; i < 300; ++i) {
        std::vector<std::string> elements(100);
        std::string text;
        for (std::string& each : elements) {
            // At, just below and just above the midpoint of two floats.
            const u32 bits = static_cast<u32>(0x3F800000 + random() % 0x0B000000);
            const double middle = (static_cast<double>(std::bit_cast<float>(bits)) +
                                   static_cast<double>(std::bit_cast<float>(bits + 1))) /
                                  2;
            char buffer[64];
            std::snprintf(buffer, sizeof buffer, "%.*f", static_cast<int>(random() % 12), middle);
            each = buffer;
            text += each + ' ';
        }
        for (const InstructionSet set : supportedSets()) {
            const Filled filled = fill<float>(set, [&](NumberFiller& filler) { filler.take(text); });
            for (std::size_t n = 0; n < elements.size(); ++n) {
                float expected = 0;
                ASSERT_TRUE(parseGeneral(elements[n], expected));
                ASSERT_EQ(std::memcmp(filled.block.data() + 4 * n, &expected, 4), 0) << elements[n];
            }
        }
    }
}

// More in a row than the AVX-512 reader collects for one batch of rounding.
TYPED_TEST(NumberFillerOf, readsManyLongNumbers) {
    Random random(15);
    for (int i = 0; i < 50; ++i) {
        std::vector<std::string> elements(capacity);
        std::string text;
        for (std::string& each : elements) {
            each = std::to_string(random() >> (random() % 10 == 0 ? 50 : random() % 10));
            if (std::is_floating_point_v<TypeParam>)
                each.insert(random() % each.size(), ".");
            if (random() % 2)
                each.insert(0, "-");
            text += each + ' ';
        }
        const Filled expected = fillGeneral<TypeParam>(elements);
        for (const InstructionSet set : supportedSets()) {
            const Filled filled = fill<TypeParam>(set, [&](NumberFiller& filler) {
                filler.take(text);
                filler.finish();
            });
            ASSERT_TRUE(filled == expected) << static_cast<int>(set) << ": " << text;
        }
    }
}

namespace {

// So many characters are parsed number by number before the first block.
const std::string beforeFirstBlock = [] {
    std::string text;
    while (text.size() < 64)
        text += "1 ";
    return text;
}();

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> elements;
    for (const String& part : String(std::string_view(text)).split(' ', true))
        elements.emplace_back(part.view());
    return elements;
}

template <class Number> void expectAllSetsToRead(const std::string& text) {
    const Filled expected = fillGeneral<Number>(split(text));
    for (const InstructionSet set : supportedSets()) {
        const Filled filled = fill<Number>(set, [&](NumberFiller& filler) {
            filler.take(text);
            filler.finish();
        });
        ASSERT_TRUE(filled == expected) << static_cast<int>(set) << ": " << text;
    }
}

} // namespace

// The block before a number that crosses its end stops at the last complete number, and the next one starts with it.
TYPED_TEST(NumberFillerOf, readsNumbersThatCrossTheEndOfABlock) {
    std::string after;
    for (int i = 0; i < 80; ++i)
        after += " " + std::to_string(i);
    for (std::size_t offset = 2; offset < 64; ++offset)
        for (const char* number : {"7", "12", "123", "-12", "1234567", "12345678", "123456789", "-1.25", ".0625",
                                   "12345.678", "-1234567890.12345", "1234567890123456789", "12345678901234567890"}) {
            const std::string text = beforeFirstBlock + "5" + std::string(offset - 1, ' ') + number + after;
            expectAllSetsToRead<TypeParam>(text);
            if (testing::Test::HasFatalFailure())
                FAIL() << "at " << offset;
        }
}

// A list may contain any separator; each byte value at each position of a block.
TEST(NumberFiller, separatesAtTheSameBytesWithEachSet) {
    for (int byte = 0; byte < 256; ++byte)
        for (std::size_t position = 0; position < 64; ++position) {
            std::string text = beforeFirstBlock;
            while (text.size() < 256)
                text += "77 ";
            text[64 + position] = static_cast<char>(byte);
            const auto feed = [&](NumberFiller& filler) {
                filler.take(text);
                filler.finish();
            };
            const Filled expected = fill<i32>(InstructionSet::Baseline, feed);
            for (const InstructionSet set : supportedSets())
                ASSERT_TRUE(fill<i32>(set, feed) == expected)
                    << static_cast<int>(set) << ": byte " << byte << " at " << position;
        }
}

TEST(NumberFiller, roundsExactTiesOfFloatsHalfToEven) {
    const std::pair<const char*, float> cases[] = {
        {"16777217", 16777216},    {"16777219", 16777220},           {"8388608.5", 8388608},   {"8388609.5", 8388610},
        {"4194304.25", 4194304},   {"4194304.75", 4194305},          {"-8388608.5", -8388608}, {"-8388609.5", -8388610},
        {"65536.00390625", 65536}, {"65536.01171875", 65536.015625F}};
    for (const auto& [text, expected] : cases)
        for (std::size_t lane = 0; lane < 8; ++lane) {
            std::string list = beforeFirstBlock;
            for (std::size_t i = 0; i < 64; ++i)
                list += i == lane ? text + std::string(" ") : "1 ";
            for (const InstructionSet set : supportedSets()) {
                const Filled filled = fill<float>(set, [&](NumberFiller& filler) { filler.take(list); });
                float number = 0;
                std::memcpy(&number, filled.block.data() + (32 + lane) * sizeof number, sizeof number);
                ASSERT_EQ(number, expected) << text << " with " << static_cast<int>(set) << " in lane " << lane;
            }
        }
}

// Decimals that are not ties of floats but round to a double that is one: rounding twice would go wrong for half of
// them.
TEST(NumberFiller, roundsDecimalsNextToTiesOfFloatsOnce) {
    Random random(16);
    std::size_t count = 0;
    while (count < 1000) {
        // Below 9, decimals with 15 places fit 53 bits; with 14 they fit the 16 characters that the AVX2 reader
        // accepts. The midpoint of two floats has up to 21 places.
        const float below = 8 + static_cast<float>(random() % (1U << 20)) / (1U << 20);
        const double middle = (static_cast<double>(below) + static_cast<double>(std::nextafter(below, 9.0F))) / 2;
        char text[64];
        std::snprintf(text, sizeof text, "%.*f", count % 2 == 0 ? 14 : 15, middle);
        char exact[64];
        std::snprintf(exact, sizeof exact, "%.25f", middle);
        if (std::strtod(text, nullptr) != middle ||
            std::string_view(exact).starts_with(text + std::string("0000000000")))
            continue;
        ++count;
        const float expected = std::strtof(text, nullptr);
        const std::string list = beforeFirstBlock + text + std::string(count % 7, ' ') + " 1 1 1 1 1 1 1 1 " +
                                 std::string(64, ' ') + beforeFirstBlock;
        for (const InstructionSet set : supportedSets()) {
            const Filled filled = fill<float>(set, [&](NumberFiller& filler) { filler.take(list); });
            float number = 0;
            std::memcpy(&number, filled.block.data() + 32 * sizeof number, sizeof number);
            ASSERT_EQ(number, expected) << text << " with " << static_cast<int>(set);
        }
    }
}

// The AVX-512 reader rounds long numbers in batches of up to 256 and reserves space for those of one block: at most
// seven of eight digits that are ties. Batches just below, at and above that size, with long numbers in both groups of
// eight of a block.
TEST(NumberFiller, readsAsManyLongNumbersAsABatchHolds) {
    for (std::size_t ties = 216; ties < 264; ++ties) {
        std::string text = beforeFirstBlock;
        for (std::size_t i = 0; i < ties; ++i)
            text += std::to_string(16777217 + 2 * (i % 1000)) + ' ';
        for (int i = 0; i < 10; ++i)
            text += "16777217 1 1 1 1 1 1 1 16777217 16777219 16777221 16777223 2 2 ";
        expectAllSetsToRead<float>(text);
    }
}

TEST(NumberFiller, readsNothingOutsideTheText) {
    // An allocation of exactly the length of the text, so that the address sanitizer detects reads beyond either end.
    for (std::size_t length = 1; length < 400; ++length) {
        const std::unique_ptr<char[]> text(new char[length]);
        for (std::size_t i = 0; i < length; ++i)
            text[i] = i % 9 == 8 ? ' ' : '7';
        for (const InstructionSet set : supportedSets()) {
            const Filled filled = fill<u32>(set, [&](NumberFiller& filler) {
                filler.take({text.get(), length});
                filler.finish();
            });
            ASSERT_EQ(filled.bytes, (length + 8) / 9 * 4);
        }
    }
}

TEST(NumberFiller, readsBlocksWithEachSetButTheBaseline) {
    for (const InstructionSet set : supportedSets())
        EXPECT_EQ(blockReader<float>(set) != nullptr, set != InstructionSet::Baseline) << static_cast<int>(set);
}

TEST(NumberFiller, canBeLimitedToLess) {
    const InstructionSet best = instructionSet();
    limitInstructionSet(InstructionSet::Baseline);
    EXPECT_EQ(instructionSet(), InstructionSet::Baseline);
    limitInstructionSet(InstructionSet::Avx512);
    EXPECT_EQ(instructionSet(), best);
}

} // namespace vrn::test

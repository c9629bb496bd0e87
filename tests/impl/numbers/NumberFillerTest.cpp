// Numbers many at a time, against one after the other.
#include "impl/numbers/NumberFiller.h"

#include "tests/support/Reading.h"

#include <random>

namespace vrn::test {

namespace {

std::vector<InstructionSet> instructionSets() {
    std::vector<InstructionSet> sets{InstructionSet::Baseline};
    for (const InstructionSet set : {InstructionSet::Avx2, InstructionSet::Avx512})
        if (set <= instructionSet())
            sets.push_back(set);
    return sets;
}

struct Filled {
    std::vector<std::byte> block;
    std::size_t bytes = 0;
    bool isRead = true;
    std::optional<String> excess;

    friend bool operator==(const Filled&, const Filled&) = default;
};

constexpr std::size_t capacity = 1000; // numbers

template <class Number, class Give> Filled fill(InstructionSet set, Give give) {
    Filled filled;
    filled.block.resize(capacity * sizeof(Number));
    const std::unique_ptr<NumberFiller> filler = NumberFiller::make<Number>(filled.block, set);
    give(*filler);
    filled.bytes = filler->filledBytes();
    filled.isRead = filler->isRead();
    filled.excess = filler->excess();
    return filled;
}

// The same the long way: no text with a blank before it goes the short one.
template <class Number> bool readTheLongWay(const std::string& text, Number& number) {
    return String::parse(std::string_view(" " + text), number);
}

template <class Number> Filled fillTheLongWay(const std::vector<std::string>& elements) {
    Filled filled;
    filled.block.resize(capacity * sizeof(Number));
    for (const std::string& each : elements) {
        if (filled.bytes == filled.block.size()) {
            filled.excess = String(std::string_view(each));
            break;
        }
        Number number = 0;
        if (readTheLongWay(each, number))
            std::memcpy(filled.block.data() + filled.bytes, &number, sizeof number);
        else
            filled.isRead = false;
        filled.bytes += sizeof number;
    }
    return filled;
}

using Random = std::mt19937_64;

std::string digits(Random& random, std::size_t most) {
    std::string text(random() % (most + 1), '0');
    for (char& c : text)
        c = static_cast<char>('0' + random() % 10);
    return text;
}

// What lists are made of: plain numbers of all lengths, and now and then something else.
std::string element(Random& random, int strangeness) {
    static const char* strange[] = {"-",
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
    if (random() % 100 < static_cast<unsigned>(strangeness))
        return strange[random() % std::size(strange)];
    const std::size_t most = random() % 4 == 0 ? 20 : 8;
    std::string text = random() % 4 == 0 ? "-" : "";
    text += std::to_string(random() % 10) + digits(random, random() % most);
    if (random() % 2)
        text += "." + digits(random, random() % most);
    return text;
}

std::string separator(Random& random) {
    static const char* all[] = {"\n  ", ",", ", ", "\r\n", " (", ") ", "\x80", "\x7F", "[", "]", "\t", "\xC2\xA0"};
    if (random() % 4 != 0)
        return " ";
    return random() % 50 == 0 ? std::string(random() % 200 + 1, ' ') : all[random() % std::size(all)];
}

template <class Number> void expectTheSame(Random& random) {
    const std::size_t most = random() % 20 == 0 ? capacity + 30 : 200;
    std::vector<std::string> elements(random() % most);
    const int strangeness = random() % 2 ? 0 : static_cast<int>(random() % 30);
    std::string text = random() % 2 ? "" : separator(random);
    for (std::string& each : elements) {
        each = element(random, strangeness);
        if (!std::is_floating_point_v<Number> && random() % 8 != 0)
            each = each.substr(0, each.find('.', 1));
        text += each + separator(random);
    }
    if (random() % 2)
        text.erase(text.find_last_not_of(" \n\r\t,()[]\x80\x7F\xC2\xA0") + 1);
    const Filled expected = fillTheLongWay<Number>(elements);
    const std::size_t piece = random() % 3 == 0 ? text.size() + 1 : random() % 300 + 1;
    for (const InstructionSet set : instructionSets()) {
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

TYPED_TEST(NumberFillerOf, readsManyAsOneAfterTheOther) {
    Random random(11);
    for (int i = 0; i < 3000 && !testing::Test::HasFatalFailure(); ++i)
        expectTheSame<TypeParam>(random);
}

// Each place of a block of characters, each length of a number.
TYPED_TEST(NumberFillerOf, findsNumbersWhereverTheyStand) {
    for (std::size_t before = 0; before < 70; ++before)
        for (std::size_t length = 1; length < 20; ++length)
            for (const InstructionSet set : instructionSets()) {
                const std::string number = std::string("12345678901234567890").substr(0, length);
                std::string text(128, ' '); // the first characters go one by one
                text += std::string(before, ' ') + number + std::string(200, ' ');
                TypeParam expected = 0;
                const bool isRead = readTheLongWay(number, expected);
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
            // Just at, below and above the middle between two floats.
            const u32 bits = static_cast<u32>(0x3F800000 + random() % 0x0B000000);
            const double middle = (static_cast<double>(std::bit_cast<float>(bits)) +
                                   static_cast<double>(std::bit_cast<float>(bits + 1))) /
                                  2;
            char buffer[64];
            std::snprintf(buffer, sizeof buffer, "%.*f", static_cast<int>(random() % 12), middle);
            each = buffer;
            text += each + ' ';
        }
        for (const InstructionSet set : instructionSets()) {
            const Filled filled = fill<float>(set, [&](NumberFiller& filler) { filler.take(text); });
            for (std::size_t n = 0; n < elements.size(); ++n) {
                float expected = 0;
                ASSERT_TRUE(readTheLongWay(elements[n], expected));
                ASSERT_EQ(std::memcmp(filled.block.data() + 4 * n, &expected, 4), 0) << elements[n];
            }
        }
    }
}

// More of them in a row than are put off to be rounded together.
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
        const Filled expected = fillTheLongWay<TypeParam>(elements);
        for (const InstructionSet set : instructionSets()) {
            const Filled filled = fill<TypeParam>(set, [&](NumberFiller& filler) {
                filler.take(text);
                filler.finish();
            });
            ASSERT_TRUE(filled == expected) << static_cast<int>(set) << ": " << text;
        }
    }
}

TEST(NumberFiller, readsNothingOutsideOfTheText) {
    // Exactly as long as the text, so that the address sanitizer sees a look beyond either end.
    for (std::size_t length = 1; length < 400; ++length) {
        const std::unique_ptr<char[]> text(new char[length]);
        for (std::size_t i = 0; i < length; ++i)
            text[i] = i % 9 == 8 ? ' ' : '7';
        for (const InstructionSet set : instructionSets()) {
            const Filled filled = fill<u32>(set, [&](NumberFiller& filler) {
                filler.take({text.get(), length});
                filler.finish();
            });
            ASSERT_EQ(filled.bytes, (length + 8) / 9 * 4);
        }
    }
}

TEST(NumberFiller, canBeLimitedToLess) {
    const InstructionSet best = instructionSet();
    limitInstructionSet(InstructionSet::Baseline);
    EXPECT_EQ(instructionSet(), InstructionSet::Baseline);
    EXPECT_EQ(blockReader<float>(instructionSet()), nullptr);
    limitInstructionSet(InstructionSet::Avx512);
    EXPECT_EQ(instructionSet(), best);
}

} // namespace vrn::test

#include "scene/core/ListElements.h"

#include "tests/support/InstructionSets.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace vrn::test {

namespace {

// The expected result for each maximum up to `count`.
std::vector<std::size_t> slowLengthsOfElements(std::string_view numbers, std::size_t count, std::size_t each) {
    std::vector<std::size_t> lengths{0};
    std::size_t spaces = 0;
    for (std::size_t i = 0; lengths.size() <= count; ++i) {
        const bool isComplete = i < numbers.size() && numbers[i] == ' ' && ++spaces % each == 0;
        lengths.push_back(isComplete ? i + 1 : lengths.back());
    }
    return lengths;
}

} // namespace

TEST(ListElements, endWithinTheLength) {
    withEachSet([] {
        std::mt19937 random(1);
        for (const std::size_t each : {1U, 2U, 3U, 4U, 9U, 16U})
            for (const unsigned maxDigits : {1U, 8U, 33U}) {
                std::string text(vor::elementsSlack, ' ');
                for (std::size_t i = 0; i < 30 * each; ++i)
                    text += std::string(1 + random() % maxDigits, '7') + ' ';
                const std::string_view numbers = std::string_view(text).substr(vor::elementsSlack);
                const std::vector<std::size_t> expected = slowLengthsOfElements(numbers, numbers.size() + 70, each);
                for (std::size_t maxLength = 0; maxLength < expected.size(); ++maxLength)
                    ASSERT_EQ(vor::lengthOfElements(numbers, maxLength, each), expected[maxLength])
                        << each << " of up to " << maxDigits << " in " << maxLength;
            }
    });
}

TEST(ListElements, lengthOfTheFirst) {
    EXPECT_EQ(vor::lengthOfElement("1 22 333 ", 1), 2U);
    EXPECT_EQ(vor::lengthOfElement("1 22 333 4 ", 3), 9U);
}

} // namespace vrn::test

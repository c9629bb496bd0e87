#include "scene/core/ListElements.h"

#include "tests/support/InstructionSets.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace vrn::test {

namespace {

// Reference implementation.
std::size_t slowLengthOfElements(std::string_view numbers, std::size_t maxLength, std::size_t each) {
    std::size_t count = 0;
    std::size_t length = 0;
    for (std::size_t i = 0; i < std::min(maxLength, numbers.size()); ++i)
        if (numbers[i] == ' ' && ++count % each == 0)
            length = i + 1;
    return length;
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
                for (std::size_t maxLength = 0; maxLength <= numbers.size() + 70; ++maxLength)
                    ASSERT_EQ(vor::lengthOfElements(numbers, maxLength, each),
                              slowLengthOfElements(numbers, maxLength, each))
                        << each << " of up to " << maxDigits << " in " << maxLength;
            }
    });
}

TEST(ListElements, lengthOfTheFirst) {
    EXPECT_EQ(vor::lengthOfElement("1 22 333 ", 1), 2U);
    EXPECT_EQ(vor::lengthOfElement("1 22 333 4 ", 3), 9U);
}

} // namespace vrn::test

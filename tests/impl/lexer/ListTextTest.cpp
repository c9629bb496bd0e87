#include "impl/lexer/ListText.h"

#include "scene/syntax/CharClass.h"

#include <gtest/gtest.h>
#include <string>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk::impl;

// Blocks of 16 characters are tested together: each byte value at each position of two blocks.
TEST(ListText, classifiesBytesInBlocksAsTheTableDoes) {
    constexpr std::size_t blockSize = 16;
    for (int byte = 0; byte < 256; ++byte) {
        const auto c = static_cast<char>(byte);
        const bool isFlat = isIn(c, blankChar | numberChar | listPunctuation) && c != '{' && c != '}';
        for (std::size_t position = 0; position < 2 * blockSize; ++position) {
            std::string list(3 * blockSize, '1');
            list[position] = c;
            ASSERT_EQ(flatLength(list), isFlat ? list.size() : position) << "byte " << byte << " at " << position;
        }
        ASSERT_EQ(flatLength({&c, 1}), isFlat ? 1U : 0U) << "byte " << byte;
    }
}

TEST(ListText, recognisesCanonicalLists) {
    for (const std::string_view list : {"()", "(1)", "(1 2)", "(-1.5 +. infu 9e)"})
        EXPECT_EQ(canonicalLength(std::string(list) + " 1)", ')'), list.size()) << list;
    for (const std::string_view list : {"(", "(1", "(1 2", "( 1)", "(1 )", "(1  2)", "(1,2)", "((1))", "(1\t2)", "(1;)",
                                        "( )", "(0xF)", "(1 2}", "(\xFF)", "(\x80)"})
        EXPECT_EQ(canonicalLength(list, ')'), 0U) << list;
    EXPECT_EQ(canonicalLength("{1}}", '}'), 3U);
}

} // namespace vrn::test

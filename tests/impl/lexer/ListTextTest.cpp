#include "impl/lexer/ListText.h"

#include "scene/syntax/CharClass.h"

#include <gtest/gtest.h>
#include <string>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct Scanned {
    std::size_t length = 0;
    ScanEnd end = ScanEnd::EndOfText;
    bool isFlat = true;
    friend bool operator==(const Scanned&, const Scanned&) = default;
};

// Scans a list in pieces of a given size. Pieces of one character never form a block, so that every character is
// classified by the table.
Scanned scan(std::string_view list, std::size_t pieceSize) {
    ListScanner scanner('{', '}');
    Scanned scanned;
    for (std::size_t at = 0; at < list.size() && scanned.length == at; at += pieceSize) {
        const std::string_view piece = list.substr(at, pieceSize);
        const ScanExtent extent = scanner.scan(piece);
        scanned.length += extent.length;
        scanned.end = extent.end;
        if (extent.end != ScanEnd::EndOfText || extent.length != piece.size())
            break;
    }
    scanned.isFlat = scanner.isFlat();
    return scanned;
}

} // namespace

// Blocks of 16 characters start after the bracket: each byte value is tested at each position of two blocks.
TEST(ListScanner, classifiesBytesInBlocksAsTheTableDoes) {
    constexpr std::size_t blockSize = 16;
    for (int byte = 0; byte < 256; ++byte)
        for (std::size_t position = 0; position < 2 * blockSize; ++position) {
            std::string list = "{" + std::string(3 * blockSize, '1') + "}";
            list[1 + position] = static_cast<char>(byte);
            const Scanned expected = scan(list, 1);
            ASSERT_EQ(scan(list, list.size()), expected) << "byte " << byte << " at " << position;
            // The bytes of a list are separators, parts of numbers or brackets; any other ends the scan there.
            const bool isAllowed = isIn(static_cast<char>(byte), blankChar | numberChar | listPunctuation);
            ASSERT_EQ(expected.length < 1 + position + 1, !isAllowed) << "byte " << byte << " at " << position;
        }
}

} // namespace vrn::test

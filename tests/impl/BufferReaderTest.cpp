// Compares buffers that are read while their list is scanned with those that are read from a scanned list.
#include "impl/BufferReader.h"

#include "impl/lexer/FileLexer.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"
#include "tests/support/Sources.h"

#include <algorithm>
#include <random>

namespace vrn::test {

namespace {

struct Read {
    std::string end; // the token
    std::vector<std::byte> bytes{};
    ElementsRead elements{};

    friend bool operator==(const Read&, const Read&) = default;
};

Read resultOf(const Token& token, const ElementsRead& elements, const AttrData& buffer) {
    const bool isList = token.type == Token::Type::Braces;
    std::string end = String::format("%d (%d,%d) ", static_cast<int>(token.type), token.line, token.column).buf();
    if (!isList)
        return {.end = end.append(token.text)};
    Read read{.end = end, .elements = elements};
    if (elements.payloadError.isEmpty())
        read.bytes.assign(buffer.bytes().begin(), buffer.bytes().end());
    return read;
}

Read readWhile(Lexer& lexer, DataType type, u64 count) {
    BufferReader reader(AttrData::buffer(type, count));
    const Token token = lexer.nextToken(&reader);
    const BufferReader::Result result = reader.finish();
    return resultOf(token, result.elements, result.data);
}

Read readAfterwards(Lexer& lexer, DataType type, u64 count) {
    AttrData buffer = AttrData::buffer(type, count);
    const Token token = lexer.nextToken();
    const ElementsRead elements = token.type == Token::Type::Braces ? readElements(token.text, buffer) : ElementsRead();
    return resultOf(token, elements, buffer);
}

void expectTheSameFromAllSources(const std::string& text, DataType type, u64 count) {
    ReferenceLexer whole(text);
    const Read expected = readAfterwards(whole, type, count);
    ReferenceLexer plain(text);
    ASSERT_TRUE(readWhile(plain, type, count) == expected) << text;
    StringLexer fromString{String(std::string_view(text))};
    ASSERT_TRUE(readWhile(fromString, type, count) == expected) << text;
    for (const std::size_t size : {1U, 2U, 5U, 64U, 777U}) {
        FileLexer fromFile{File::fromSource(std::make_unique<Blocks>(text, size), size)};
        ASSERT_TRUE(readWhile(fromFile, type, count) == expected) << size << ": " << text;
    }
}

} // namespace

TEST(BufferReader, readsTheSameFromAllSources) {
    const DataType types[] = {DataType::Float, DataType::Int32, DataType::Byte, DataType::Vec3d, DataType::Rgba8};
    const std::string_view characters = "0123456789-.eE{}{}()[],  \n\t\x01\x80";
    std::mt19937 random(13);
    for (int i = 0; i < scaled(20000); ++i) {
        std::string text = random() % 20 == 0 ? "{.5" : "{";
        const std::size_t length = random() % (i % 10 == 0 ? 600 : 60);
        const std::size_t kinds = random() % 4 == 0 ? characters.size() : 10 + random() % 4;
        for (std::size_t n = 0; n < length; ++n)
            text += random() % 2000 == 0 ? "x\xFF"[random() % 2]
                    : random() % 5 == 0  ? ' '
                                         : characters[random() % kinds];
        text += "}}};";
        text.erase(text.size() - random() % 2);
        expectTheSameFromAllSources(text, types[random() % std::size(types)], random() % 40);
    }
}

TEST(BufferReader, readsTheSamePayloads) {
    const std::string stream = "789CEDC1010D000000C2A0F74F6D0E37A00000000000000000000000E06E0100000100000001";
    std::mt19937 random(14);
    for (int i = 0; i < scaled(2000); ++i) {
        std::string text = random() % 2 ? "{." : "{ \n.";
        for (std::size_t at = 0; at < stream.size(); ++at) {
            text += stream[at];
            text += random() % 20 == 0 ? "\n " : random() % 50 == 0 ? "," : random() % 400 == 0 ? "-" : "";
        }
        text.erase(text.size() - random() % 2);
        text += "};";
        expectTheSameFromAllSources(text, DataType::Byte, 100000);
    }
}

TEST(BufferReader, readsLongListsInPieces) {
    constexpr int count = scaled(200000); // several pieces
    std::string text = "{";
    for (int i = 0; i < count; ++i)
        text += std::to_string(i * 7919 % 100000) + (i % 10 == 9 ? "\n" : " ");
    expectTheSameFromAllSources(text + "}", DataType::UInt32, count);
    expectTheSameFromAllSources(text + "}", DataType::UInt32, count - 1);
    expectTheSameFromAllSources(text + "{1}2 3}", DataType::UInt32, count + 10);
    expectTheSameFromAllSources("{{1}" + text.substr(1) + "}", DataType::UInt32, count);
    expectTheSameFromAllSources("{{1 " + text.substr(1) + "\xFF}}", DataType::UInt32, count + 1);
}

TEST(BufferReader, leavesNoTextInTheToken) {
    BufferReader reader(AttrData::buffer(DataType::Int32, 2));
    StringLexer lexer("{1 2};");
    EXPECT_EQ(lexer.nextToken(&reader).text, "{}");
}

} // namespace vrn::test

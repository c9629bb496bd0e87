#include "scene/core/Decompress.h"
#include "tests/support/Reading.h"

#include <libdeflate.h>

namespace vrn::test {

static std::string payloadOf(const std::string& bytes) {
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(libdeflate_alloc_compressor(9),
                                                                                        libdeflate_free_compressor);
    std::vector<u8> stream(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()));
    stream.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), stream.data(), stream.size()));
    std::string payload = ".";
    for (const u8 byte : stream)
        payload += String::format("%02x", byte).view();
    return payload;
}

struct Outcome {
    std::string bytes;
    std::string error;
};

static Outcome inflate(const std::string& payload, std::size_t expected) {
    String error;
    const DecompressedBytes result =
        decompress(reinterpret_cast<const u8*>(payload.data()), payload.size(), error, expected);
    const char* bytes = reinterpret_cast<const char*>(result.bytes.get());
    return {result.length == 0 ? "" : std::string(bytes, result.length), std::string(error.view())};
}

TEST(Decompress, inflatesWhatWasDeflated) {
    const std::string text = "abcabcabcabc";
    EXPECT_EQ(inflate(payloadOf(text), text.size()).bytes, text);
    EXPECT_EQ(inflate(payloadOf(text), 100).bytes, text) << "fewer bytes than expected are fine";
    std::string spaced = " ";
    for (const char c : payloadOf(text))
        spaced += std::string(1, static_cast<char>(std::toupper(c))) + " ";
    EXPECT_EQ(inflate(spaced, text.size()).bytes, text) << "spaces anywhere, digits in either case";
}

TEST(Decompress, saysWhatIsWrong) {
    const std::string good = payloadOf("abcabcabcabc");
    const struct {
        std::string payload;
        std::size_t expected;
        const char* error;
    } cases[] = {
        {".7g", 4, "compressed payload: invalid character 'g'"},
        {"78", 4, "compressed payload: invalid character '7'"},
        {".78,9c", 4, "compressed payload: invalid character ','"},
        {".78\t9c", 4, "compressed payload: invalid character '\t'"},
        {".7g8", 4, "compressed payload: invalid character 'g'"},
        {".7.8", 4, "compressed payload: invalid character '.'"},
        {".789", 4, "compressed payload: odd number of hexadecimal digits"},
        {".", 4, "compressed payload: corrupt data"},
        {"", 4, "compressed payload: corrupt data"},
        {".789c", 4, "compressed payload: corrupt data"},
        {good.substr(0, good.size() - 2), 12, "compressed payload: corrupt data"},
        {good + "00", 12, "compressed payload: corrupt data"},  // bytes after the end of the stream
        {payloadOf(""), 4, "compressed payload: corrupt data"}, // a stream of no bytes
        {good, 11, "compressed payload: more than 11 bytes"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = inflate(c.payload, c.expected);
        EXPECT_EQ(outcome.error, c.error) << c.payload;
        EXPECT_EQ(outcome.bytes, "");
    }
}

} // namespace vrn::test

// Reads every file of tests/data from a string, from the file, and in small blocks, and compares the result with the
// expected scene (`NNN_topic.json`) and log (`NNN_topic.log`). VRN_UPDATE_GOLDENS=1 overwrites both; review the diff.
#include "tests/support/Reading.h"
#include "tests/support/Texts.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>

namespace vrn::test {

namespace fs = std::filesystem;

static void expectGolden(const std::string& text, fs::path path, const char* extension) {
    path.replace_extension(extension);
    if (std::getenv("VRN_UPDATE_GOLDENS"))
        std::ofstream(path, std::ios::binary) << text;
    EXPECT_EQ(text, contentOf(path)) << path;
}

// Delivers a text in blocks of 1 to 5 bytes.
class RaggedSource final : public ByteSource {
public:
    explicit RaggedSource(std::string text) : text_(std::move(text)) {}
    std::size_t read(char* buffer, std::size_t capacity, String&) override {
        size_ = size_ % 5 + 1;
        const std::size_t count = std::min({capacity, text_.size() - at_, size_});
        text_.copy(buffer, count, at_);
        at_ += count;
        return count;
    }

private:
    std::string text_;
    std::size_t at_ = 0;
    std::size_t size_ = 0;
};

template <class Read> static Reading readWith(Read read) {
    Reading reading;
    reading.run([&] { return read(reading.scene.get()); });
    return reading;
}

class Golden : public testing::TestWithParam<fs::path> {};

TEST_P(Golden, readsAsWritten) {
    const std::string text = contentOf(GetParam());
    const Reading reading = readWith([&](Scene* scene) { return parseString(scene, std::string_view(text)); });
    expectGolden(reading.json(), GetParam(), ".json");
    expectGolden(reading.logText(), GetParam(), ".log");
    EXPECT_EQ(reading.isOk, GetParam().parent_path().filename() == "accept");

    const Reading byFile =
        readWith([&](Scene* scene) { return parseVrn(scene, File::open(GetParam().c_str()), false); });
    EXPECT_EQ(byFile.json(), reading.json());
    EXPECT_EQ(byFile.logText(), reading.logText());

    const Reading byPieces = readWith([&](Scene* scene) {
        return parseVrn(scene, File::fromSource(std::make_unique<RaggedSource>(text), 7), false);
    });
    EXPECT_EQ(byPieces.json(), reading.json());
    EXPECT_EQ(byPieces.logText(), reading.logText());
}

INSTANTIATE_TEST_SUITE_P(Data, Golden, testing::ValuesIn(goldenTexts()), [](const auto& golden) {
    std::string name = golden.param.parent_path().filename().string() + "_" + golden.param.stem().string();
    std::ranges::replace_if(
        name, [](char c) { return !String::isLetter(c) && !String::isDigit(c); }, '_');
    return name;
});

// German number formatting in the C++ locale. The test also sets the C locale and fails if it is not installed.
class GermanNumbers : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// The scenes and logs of all golden files.
static std::string allReadings() {
    std::string all;
    for (const fs::path& path : goldenTexts()) {
        const std::string text = contentOf(path);
        const Reading reading = readText(String(std::string_view(text)));
        all += reading.json() + reading.logText();
    }
    return all;
}

TEST(Locale, changesNothing) {
    const std::string before = allReadings();
    ASSERT_FALSE(before.empty());
    ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8")) << "make test sets LOCPATH to a folder with this locale";
    const std::locale outer = std::locale::global(std::locale(std::locale(), new GermanNumbers));
    const std::string after = allReadings();
    const String comma = String::format("%.1f", 0.5);
    std::locale::global(outer);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(comma, "0,5") << "the locale was active";
    EXPECT_EQ(after, before);
}

} // namespace vrn::test

// Input with printf conversions or terminal control sequences is reported verbatim.
#include "scene/CatalogueJson.h"
#include "tests/support/Reading.h"

namespace vrn::test {

namespace {

constexpr const char* hostile[] = {"%s%n",   "%s%s%n", "%99999999d", "\x1b[2J\x1b]0;title\x07",
                                   "\b\v\b", "%",      "%%",         "\x7F\xC2\23331m"};

std::string with(const std::string& pattern, const std::string& text) {
    std::string result = pattern;
    for (std::size_t place = 0; (place = result.find('$', place)) != std::string::npos; place += text.size())
        result.replace(place, 1, text);
    return result;
}

} // namespace

TEST(HostileText, isVerbatimInMessages) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"t a; a.x = 1 \"$\";", "found '\"$\"'."},
        {"t a; \"$\" a;", "unrecognized token '\"$\"'.."},
        {"# version: $", "Failed to parse VRN version comment: # version: $"},
        {"t a; a.x = \"$\" |= 5;", "expected ';', found '|'."},
    };
    for (const char* text : hostile)
        for (const auto& c : cases) {
            const Reading r = readText(std::string_view(with(c.text, text)));
            ASSERT_EQ(r.log.size(), 1U) << c.text << text;
            EXPECT_TRUE(r.log[0].text.view().ends_with(with(c.message, text))) << r.log[0].text.view();
        }
}

TEST(HostileText, isVerbatimInMessagesAboutEnumerations) {
    const auto catalogue = std::make_shared<const Catalogue>(
        readCatalogue(R"({"types": {"t": {"inputs": {"kind": {"type": "String", "enum": ["%s%n"]}}}}})"));
    for (const std::string text : hostile) {
        const Reading r = readText(std::string_view("t a; a.kind = \"" + text + "\";"), catalogue);
        if (text == "%s%n") { // a member of the enumeration
            EXPECT_EQ(r.log, Log{});
            continue;
        }
        EXPECT_TRUE(r.log.at(0).text.view().find("setting non-existent enum value '" + text + "' @ a.kind") !=
                    std::string_view::npos)
            << r.log.at(0).text.view();
    }
}

// A text cannot create such names, but a host can.
TEST(HostileText, isVerbatimInLabels) {
    for (const std::string name : hostile) {
        Reading r;
        Input* input = r.scene->createNode("t", "a")->createInput(std::string_view(name), AttrType::Null);
        (void)r.scene->createNode(std::string_view(name), std::string_view(name));
        EXPECT_EQ(input->label().view(), "a." + name);
        EXPECT_NE(r.json().size(), 0U);
        r.run([&] {
            logWarning({1, 2}, "%s", input->label().buf());
            return true;
        });
        EXPECT_EQ(r.log, (Log{warning(1, 2, ("a." + name).c_str())}));
    }
}

TEST(HostileText, doesNotReachTheTerminal) {
    for (const char* text : hostile) {
        testing::internal::CaptureStderr();
        Scene scene;
        (void)parseString(&scene, std::string_view(with("t a; a.x = 1 \"$\";", text)));
        const std::string shown = testing::internal::GetCapturedStderr();
        ASSERT_TRUE(shown.ends_with("'.\n"));
        for (const char c : shown.substr(0, shown.size() - 1))
            EXPECT_TRUE(static_cast<u8>(c) >= 32 && c != 127) << shown;
        EXPECT_EQ(shown.find("\xC2\x9B"), std::string::npos) << "a control character of eight bits";
    }
}

} // namespace vrn::test

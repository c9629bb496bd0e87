// Reads that are stopped on request, wherever in a text.
#include "impl/Messages.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"
#include "tests/support/Sources.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <span>

namespace vrn::test {

namespace {

constexpr std::size_t oneMebibyte = 1 << 20;
constexpr bool isSlowBuild = scaled(10) < 10;
constexpr std::size_t lateRequest = isSlowBuild ? oneMebibyte / 2 : oneMebibyte;
constexpr std::size_t textLength = lateRequest / 4 * 5; // of each text, at least

// The warning is where one of the tests requests the stop. The tokens after it are scanned before it is logged.
const std::string firstStatements = "t a;\na.x = 1;\na.b = true;\na.b = 5; a.x = 1;\n";

std::string repeated(std::string_view unit) {
    std::string text;
    while (text.size() < textLength)
        text += unit;
    return text;
}

// A zlib stream of zeros in stored blocks (RFC 1950, 1951).
std::string payload() {
    std::string digits = "7801";
    const auto byte = [&](std::size_t value) {
        digits += "0123456789ABCDEF"[value >> 4 & 15U];
        digits += "0123456789ABCDEF"[value & 15U];
    };
    constexpr std::size_t blockSize = 65535;
    constexpr std::size_t blocks = textLength / 2 / blockSize + 1;
    for (std::size_t i = 0; i < blocks; ++i) {
        byte(i + 1 == blocks ? 1 : 0);
        digits += "FFFF0000" + std::string(2 * blockSize, '0');
    }
    constexpr std::size_t sum = blocks * blockSize % 65521; // Adler-32
    for (const std::size_t value : {sum >> 8, sum, std::size_t(0), std::size_t(1)})
        byte(value);
    return "a.v = byte[" + std::to_string(blocks * blockSize) + "] {." + digits + "};";
}

struct Content {
    const char* name;
    std::string text;
    bool isWithinToken = true; // whose begin is the position of the stop
};

std::vector<Content> contents() {
    return {
        {"statements", repeated("a.y = \"text\";\na.z = vec3(1 2 3);\n"), false},
        {"statements by their tokens", repeated("a.y[0] = 1e1;\n"), false},
        {"blanks", repeated("  \n"), false},
        {"a list", "a.v = int32[10000000] {" + repeated("1234 ") + "};", false},
        {"a list in a list", "a.v = int32[10000000] {{" + repeated("1234 ") + "}};", false},
        {"a payload", payload(), false},
        {"a list as a token", "a.v = none {" + repeated("1 ") + "};", false},
        {"a list in parentheses", "a.v = vec3(1 2 3" + repeated(" ") + ");", false},
        {"a comment", "#" + repeated("x")},
        {"a string", "a.v = \"" + repeated("x\n") + "\";"},
        {"a name", "a.v" + repeated("x") + " = 1;"},
        {"a number", "a.v = " + repeated("1") + ".0;"},
        {"brackets", "a.v[" + repeated(" ") + "0] = 1;"},
    };
}

class Source {
public:
    explicit Source(std::string text) : text_(std::move(text)) {}

    static constexpr const char* all[] = {"foreign memory", "large blocks", "a string", "a path", "small blocks"};
    static constexpr std::span kinds = std::span(all).first(isSlowBuild ? 1 : 5);

    [[nodiscard]] File open(std::string_view kind) const {
        if (kind == "a string")
            return File::fromMemory(std::string_view(text_));
        if (kind == "foreign memory")
            return File::fromMemory(text_, nullptr);
        if (kind == "a path") {
            std::ofstream(path_, std::ios::binary) << text_;
            return File::open(path_.c_str());
        }
        const std::size_t size = kind == "small blocks" ? 5000 : 100 * oneMebibyte;
        return File::fromSource(std::make_unique<Blocks>(text_, size), size);
    }

private:
    std::string text_;
    TemporaryFolder folder_;
    std::string path_ = folder_.at("file");
};

struct Outcome {
    std::string log;
    TextPosition position;
    std::size_t fetched = 0; // after the request
    std::size_t nodes = 0;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

// Reads a file that is stopped when `isDue(bytes fetched so far, hasWarned)` is true, or when a warning is logged.
template <class IsDue> Outcome stopWhen(File file, IsDue isDue) {
    Outcome outcome;
    std::size_t fetched = 0;
    std::optional<std::size_t> fetchedBefore; // the request
    const auto consider = [&](bool isWarning) {
        if (!fetchedBefore && isDue(fetched, isWarning)) {
            fetchedBefore = fetched;
            file.requestStop();
        }
    };
    file.onFetch([&](std::size_t bytes) {
        fetched += bytes;
        EXPECT_LE(bytes, oneMebibyte);
        consider(false);
    });
    Scene scene;
    {
        const ScopedLogSink sink([&](const LogRecord& record) {
            const char* name = messageName(record.format);
            outcome.log += std::string(name ? name : "?") + " ";
            outcome.position = record.position;
            consider(true);
        });
        EXPECT_FALSE(parseVrn(&scene, file, false));
    }
    EXPECT_TRUE(file.isStopped());
    EXPECT_EQ(file.error(), "stopped on request");
    EXPECT_EQ(file.readBlock(), "") << "nothing more can be read";
    outcome.fetched = fetched - fetchedBefore.value_or(0);
    outcome.nodes = scene.nodeCount();
    if (const Node* node = scene.findNode("a")) {
        EXPECT_EQ(node->input("x")->value().asInt(), 1) << "what precedes the stop is in the scene";
    }
    file.onFetch({});
    return outcome;
}

} // namespace

// The observer asks for the stop once it has been called for most of the text.
TEST(Stop, endsAReadBeforeTheNextBlock) {
    for (const Content& content : contents()) {
        const Source source(firstStatements + content.text);
        const auto isLate = [](std::size_t fetched, bool) { return fetched > lateRequest; };
        for (const char* kind : Source::kinds) {
            SCOPED_TRACE(std::string(content.name) + " from " + kind);
            const Outcome outcome = stopWhen(source.open(kind), isLate);
            EXPECT_EQ(outcome.log, "typeWarning stopped ");
            EXPECT_EQ(outcome.nodes, 1U);
            EXPECT_EQ(outcome.fetched, 0U);
            EXPECT_EQ(outcome.position.line == 5 && outcome.position.column < 20, content.isWithinToken)
                << outcome.position.line << "," << outcome.position.column;
            EXPECT_EQ(outcome, stopWhen(source.open(kind), isLate)) << "every time";
        }
    }
}

// Somebody else asks for it between two blocks.
TEST(Stop, endsAReadAtTheEndOfTheBlock) {
    for (const Content& content : contents()) {
        const Source source(firstStatements + content.text);
        for (const char* kind : Source::kinds) {
            SCOPED_TRACE(std::string(content.name) + " from " + kind);
            const Outcome outcome = stopWhen(source.open(kind), [](std::size_t, bool isWarning) { return isWarning; });
            EXPECT_EQ(outcome.log, "typeWarning stopped ");
            EXPECT_EQ(outcome.fetched, 0U);
        }
    }
}

// Without a request, the same texts are read to their end.
TEST(Stop, isNotNoticedWithoutARequest) {
    for (const Content& content : contents()) {
        const Source source(firstStatements + content.text);
        for (const char* kind : Source::kinds) {
            File file = source.open(kind);
            std::size_t fetched = 0;
            file.onFetch([&](std::size_t bytes) { fetched += bytes; });
            Reading r;
            r.run([&] { return parseVrn(r.scene.get(), file, false); });
            EXPECT_EQ(r.isOk, std::string_view(content.name) != "a list as a token") << content.name << r.logText();
            EXPECT_EQ(fetched, firstStatements.size() + content.text.size()) << content.name << " from " << kind;
            EXPECT_FALSE(file.isStopped());
            EXPECT_EQ(file.error(), "");
            file.onFetch({});
        }
    }
}

// Not thrown like other errors among the first tokens: the text is not to blame.
TEST(Stop, isLoggedAmongTheFirstTokens) {
    for (const std::string text : {"", "t a", "t a; t b;", "# a comment"}) {
        File file = File::fromSource(std::make_unique<Blocks>(text, 2), 2);
        file.requestStop();
        Reading r;
        r.run([&] { return parseVrn(r.scene.get(), file, false); });
        EXPECT_FALSE(r.isOk);
        EXPECT_FALSE(r.thrown);
        EXPECT_EQ(r.logText(), "error 1,1: STOPPED (1,1): the reading was stopped on request\nresult false\n") << text;
        EXPECT_EQ(r.scene->fileComments().size(), 0U);
    }
}

// A cut token is no token: neither does a comment that is cut short come into the scene, nor is the first part of a
// statement reported as malformed.
TEST(Stop, appliesNothingThatIsCut) {
    const std::string text = "t a; a.x = 1; # version: 22\n a.y = 2345; # time: now\nt b: .z = 3;";
    for (std::size_t count = 0; count < text.size(); ++count) {
        File file = File::fromSource(std::make_unique<Blocks>(text, 1), 1);
        std::size_t fetched = 0;
        file.onFetch([&](std::size_t bytes) {
            fetched += bytes;
            if (fetched > count)
                file.requestStop();
        });
        Reading r;
        r.run([&] { return parseVrn(r.scene.get(), file, false); });
        ASSERT_FALSE(r.isOk) << count;
        ASSERT_EQ(r.log.size(), 1U) << r.logText();
        ASSERT_STREQ(messageName(r.log[0].format), "stopped");
        for (const String& comment : r.scene->fileComments())
            ASSERT_TRUE(comment == "# version: 22" || comment == "# time: now") << count << comment.buf();
        const Input* const input = r.scene->findNode("a") ? r.scene->findNode("a")->input("y") : nullptr;
        ASSERT_TRUE(!input || input->value().asInt() == 2345) << count;
        file.onFetch({});
    }
}

TEST(Stop, comesTooLateAtTheEnd) {
    File file = File::fromMemory("t a;");
    Scene scene;
    EXPECT_TRUE(parseVrn(&scene, file, false));
    file.requestStop();
    EXPECT_EQ(file.readBlock(), "");
    EXPECT_FALSE(file.isStopped());
    EXPECT_EQ(file.error(), "");
}

} // namespace vrn::test

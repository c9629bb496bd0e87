// Notices about input that is otherwise accepted silently.
#include "tests/support/Reading.h"
#include "tests/support/Sources.h"

namespace vrn::test {

namespace {

LogRecord notice(i32 line, i32 column, const char* text) { return {LogSeverity::Notice, text, {line, column}}; }

template <class Read> Log noticesOf(Read read) {
    Log notices;
    const ScopedLogSink sink(
        [&](const LogRecord& record) {
            if (record.severity == LogSeverity::Notice)
                notices.push_back(record);
        },
        Notices::Yes);
    Scene scene;
    try {
        (void)read(scene);
    } catch (const ReadError&) {
        return notices;
    }
    return notices;
}

Log noticesFromMemory(const std::string& text) {
    return noticesOf([&](Scene& scene) { return parseString(&scene, std::string_view(text)); });
}

Log noticesFromFile(const std::string& text, std::size_t block) {
    return noticesOf([&](Scene& scene) {
        return parseVrn(&scene, File::fromSource(std::make_unique<Blocks>(text, block), block), true);
    });
}

Log noticesByteByByte(const std::string& text) {
    return noticesOf([&](Scene& scene) {
        ReferenceLexer lexer(text);
        return VrnParser().parse(&scene, &lexer);
    });
}

struct Case {
    std::string text;
    Log notices;
};

// All sources with a window: they can distinguish a byte that ends the text from its end.
void expectNoticesOfAllSources(const Case& c) {
    EXPECT_EQ(noticesFromMemory(c.text), c.notices) << c.text;
    for (const std::size_t block : {1U, 2U, 7U, 1000U})
        EXPECT_EQ(noticesFromFile(c.text, block), c.notices) << block << c.text;
}

} // namespace

TEST(Notices, reportWhatIsAcceptedSilently) {
    const char* const foreign = "bytes outside ASCII between tokens are taken for blanks: 3 in all";
    const Case cases[] = {
        {"t a; a.x = 1; a.y = a; with a: .z = 2; # \xC3\xA4\nA a2; with a2: a.s = \"\xE2\x80\x83\";", {}},
        {"t a;\n\"abc", {notice(2, 4, "the text ends too early: UNEXPECTED EOF while parsing STRING")}},
        {"t a; {1 2", {notice(1, 9, "the text ends too early: UNEXPECTED EOF while parsing BRACES")}},
        {"t a; a.x = \"abc", {}}, // reported by an error
        {"t a;\nt a;\nu a;\nt b; define c; define c; u c;",
         {notice(3, 4, "node a is declared as a u but stays a t"),
          notice(4, 29, "node c is declared as a u but stays a c")}},
        {"t a; with b: .x = 1; With c; with c:",
         {notice(1, 12, "there is no node b to go on with; a new one of type with is made"),
          notice(1, 28, "there is no node c to go on with; a new one of type With is made")}},
        {"t a; a.l[1] |= a.o;\na.l[1] |= a.p; a.r = a; a.r = b; a.l[0] |= a.p;",
         {notice(2, 13, "an earlier link of a.l[1] is replaced"), notice(2, 31, "an earlier link of a.r is replaced")}},
        {"t a; a.l |= a.o; a.l |= null; a.r = a; a.r = NULL;", {}}, // undone on purpose
        {"t a; a.l |= null; a.l |= a.o; a.r = null; a.r = a;", {}}, // replaces nothing
        {"t a;\xE2\x80\x83 a.x = 1;", {notice(1, 5, foreign)}},
        {"t a;\n \xE2\x80\x83\na.x = 1;", {notice(2, 2, foreign)}},
        {"t a;\n\xC2\xA0#c\n a.x = 1;\xFE", {notice(2, 1, foreign)}},
        {"t a;\n\xC2\xA0 \xC2 a.x = 1;" + std::string(40, ' '), {notice(2, 1, foreign)}},
        {"\xEF\xBB\xBFt a;\n", {}},
        {"t \xEF\xBB\xBF a;\n", {notice(1, 3, foreign)}},
        {"\xEF\xBB\xBF\xEF\xBB\xBFt a;\n", {notice(1, 4, foreign)}},
        {"t a; a\xE2\x80\x83.x = ;", {notice(1, 7, foreign)}}, // also of a text with an error
        {"\xE2\x80\x9C a ?", {notice(1, 1, foreign)}},         // even among the first tokens
        {"\xEF t a;\xFE\xFE", {notice(1, 1, foreign)}},
    };
    for (const Case& c : cases) {
        expectNoticesOfAllSources(c);
        EXPECT_EQ(noticesByteByByte(c.text), c.notices) << c.text;
    }
}

TEST(Notices, reportWhereAByteEndsTheText) {
    const char* const ended = "a byte 0xFF ends the text; nothing behind it is read";
    const Case cases[] = {
        {"t a;\n\xFF t b;", {notice(2, 1, ended)}},
        {"t a;# c\xFF", {notice(1, 8, ended)}},
        {"t a; \"b\xFF\"",
         {notice(1, 7, "the text ends too early: UNEXPECTED EOF while parsing STRING"), notice(1, 8, ended)}},
        {"t a; a.x = \"\xFF\";", {notice(1, 13, ended)}},
        {"t a; a.x = float[2] {1 \xFF};", {notice(1, 24, ended)}},
    };
    for (const Case& c : cases)
        expectNoticesOfAllSources(c);
}

TEST(Notices, areNotPartOfTheLog) {
    const Reading r = readText("t a; u a; with b: \"abc");
    EXPECT_TRUE(r.isOk);
    EXPECT_EQ(r.log, Log{});
    EXPECT_FALSE(wantsNotices());
    logNotice({1, 1}, "nobody hears %s", "this");
    const ScopedLogSink sink([](const LogRecord&) {}, Notices::Yes);
    EXPECT_TRUE(wantsNotices());
    const ScopedLogSink inner([](const LogRecord&) {});
    EXPECT_FALSE(wantsNotices());
}

} // namespace vrn::test

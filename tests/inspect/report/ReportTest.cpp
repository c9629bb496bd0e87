// Reports on values that no file was read for.
#include "inspect/report/Report.h"

#include "check/Messages.h"
#include "tests/support/Reading.h"

#include <thread>

namespace vrn::test {

using namespace vrn::inspect;

namespace {

Diagnostic diagnostic(LogSeverity severity, const char* text, TextPosition position, const char* format = nullptr) {
    Diagnostic made{{severity, text, position, format}};
    made.line = readExcerpts(File::fromMemory("one\n\xC3\xA4 two\n"), {position}).front();
    return made;
}

// A file with one diagnostic of each severity, one without any, and one that could not be read.
const std::vector<Diagnosis>& files() {
    static const std::vector<Diagnosis> all = {
        {.name = "./a b.vrn",
         .diagnostics = {diagnostic(LogSeverity::Error, "bad \x1B", {2, 4}),
                         diagnostic(LogSeverity::Warning, "odd", {1, 1}, check::messages::unknownInput),
                         diagnostic(LogSeverity::Notice, "hm", {})}},
        {.name = "-", .isAccepted = true},
        {.name = "/c.vrn", .readError = "No such file"},
    };
    return all;
}

bool contains(const std::string& text, std::string_view part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(Report, asText) {
    EXPECT_EQ(reportText(makeTextReport, files()), "./a b.vrn:2:4: error: bad \\x1B\n"
                                                   "\xC3\xA4 two\n  ^\n"
                                                   "./a b.vrn:1:1: warning: odd [unknownInput]\n"
                                                   "one\n^\n"
                                                   "./a b.vrn:0:0: warning: hm [check]\n"
                                                   "2 files checked: 1 error, 2 warnings; 1 file could not be read\n");
}

TEST(Report, asJson) {
    EXPECT_EQ(reportText(makeJsonReport, files()),
              "{\"file\":\"./a b.vrn\",\"ok\":false,\"diagnostics\":["
              "{\"severity\":\"error\",\"message\":\"bad \\u001B\",\"line\":2,\"column\":4},"
              "{\"severity\":\"warning\",\"message\":\"odd\",\"source\":\"types\",\"rule\":\"unknownInput\",\"line\":1,"
              "\"column\":1},"
              "{\"severity\":\"warning\",\"message\":\"hm\",\"source\":\"check\",\"line\":0,\"column\":0}]}\n"
              "{\"file\":\"-\",\"ok\":true,\"diagnostics\":[]}\n"
              "{\"file\":\"/c.vrn\",\"ok\":false,\"error\":\"No such file\",\"diagnostics\":[]}\n");
}

TEST(Report, asWorkflowCommands) {
    EXPECT_EQ(reportText(makeGithubReport, files()),
              "::error file=a b.vrn,line=2,col=3,title=vrn check::bad \\x1B\n"
              "::warning file=a b.vrn,line=1,col=1,title=vrn check::odd [unknownInput]\n"
              "::warning file=a b.vrn,title=vrn check::hm [check]\n"
              "::error file=/c.vrn,title=vrn check::No such file\n");
}

TEST(Report, asSarif) {
    const std::string log = reportText(makeSarifReport, files());
    const char* parts[] = {
        R"({"ruleId":"error","level":"error","message":{"text":"bad \u001B"},)",
        R"({"artifactLocation":{"uri":"a%20b.vrn"},"region":{"startLine":2,"startColumn":3}})",
        R"("ruleId":"unknownInput","level":"warning")",
        R"("ruleId":"note","level":"note")",
        R"("executionSuccessful":false)",
        R"({"artifactLocation":{"uri":"file:///c.vrn"}})",
    };
    for (const char* part : parts)
        EXPECT_TRUE(contains(log, part)) << part << '\n' << log;
    const std::string empty = reportText(makeSarifReport, {});
    EXPECT_TRUE(contains(empty, R"("results":[)")) << empty;
    EXPECT_TRUE(contains(empty, R"("executionSuccessful":true)")) << empty;
    const Diagnosis input{.name = "-", .diagnostics = {diagnostic(LogSeverity::Error, "bad", {1, 1})}};
    EXPECT_TRUE(contains(reportText(makeSarifReport, {&input, 1}),
                         R"("artifactLocation":{"description":{"text":"standard input"}})"));
}

TEST(Report, isFoundByItsName) {
    EXPECT_EQ(reportNames(), (std::vector<std::string>{"text", "json", "sarif", "github"}));
    for (const std::string& name : reportNames())
        EXPECT_NE(reportNamed(name), nullptr) << name;
    EXPECT_EQ(reportNamed("json"), &makeJsonReport);
    EXPECT_EQ(reportNamed("JSON"), nullptr);
}

TEST(Report, needsLinesUnlessItShowsBytes) {
    for (const std::string& name : reportNames())
        EXPECT_EQ(reportNamed(name)([](std::string_view) {})->needsLines(), name != "json") << name;
}

// Several threads prepare; the order in which the parts are written alone decides the text.
TEST(Report, isPreparedByThreadsAndWrittenInOrder) {
    for (const std::string& name : reportNames()) {
        std::vector<Diagnosis> many(16, files()[0]);
        for (std::size_t i = 0; i < many.size(); ++i)
            many[i].name = String::format("%zu.vrn", i);
        std::string text;
        const auto report = reportNamed(name)([&](std::string_view piece) { text += piece; });
        std::vector<Report::Finish> finishes(many.size());
        {
            std::vector<std::jthread> threads;
            for (std::size_t i = many.size(); i-- != 0;)
                threads.emplace_back([&, i] { finishes[i] = report->about(many[i]); });
        }
        EXPECT_EQ(text, "") << name;
        Totals totals;
        for (std::size_t i = 0; i < many.size(); ++i) {
            finishes[i]();
            totals += totalsOf(many[i]);
        }
        report->end(totals);
        EXPECT_EQ(text, reportText(reportNamed(name), many)) << name;
    }
}

} // namespace vrn::test

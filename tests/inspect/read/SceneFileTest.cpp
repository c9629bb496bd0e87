// Reading files, pipes and texts with their diagnostics.
#include "inspect/read/SceneFile.h"

#include "inspect/read/Kind.h"
#include "scene/CatalogueJson.h"
#include "tests/support/Reading.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <sys/stat.h>
#include <thread>

namespace vrn::test {

using namespace vrn::inspect;

namespace {

// A folder for one test.
class SceneFiles : public testing::Test {
protected:
    [[nodiscard]] std::string path(const char* name) const { return folder_.at(name); }
    [[nodiscard]] std::string file(const char* name, const char* text) const {
        std::ofstream(path(name)) << text;
        return path(name);
    }

private:
    TemporaryFolder folder_;
};

std::vector<std::string> kindsOf(const Diagnosis& diagnosis) {
    std::vector<std::string> kinds;
    for (const Diagnostic& diagnostic : diagnosis.diagnostics)
        kinds.emplace_back(kindOf(diagnostic.record));
    return kinds;
}

constexpr const char* mistakes = "t a; a.b = true;\na.\xC3\xA4 = 1; a.b = 1.5; a.f = float[2] {1};\nu a;\n";

} // namespace

TEST_F(SceneFiles, areReadWithWhatIsWrong) {
    SceneFile text("here", "t a;\na.f = float[2] {1};\na.x = ;\na.y = 1;");
    Scene scene;
    text.read(scene);
    const Diagnosis& found = text.diagnosis();
    EXPECT_FALSE(found.isOk());
    EXPECT_TRUE(found.isWhole());
    EXPECT_TRUE(found.hasErrors());
    EXPECT_EQ(found.count(LogSeverity::Error), 1U);
    EXPECT_EQ(found.warnings(), 1U);
    EXPECT_EQ(kindsOf(found), (std::vector<std::string>{"tooFewElements", "badToken"}));
    EXPECT_EQ(scene.findNode("a")->input("y"), nullptr); // nothing is read after the error
    const Diagnosis lines = text.diagnosisWithLines();
    EXPECT_EQ(diagnosticsText(lines),
              "here:2:11: warning: Too few elements (1) for float[2] buffer, remainder set to zero.\n"
              "a.f = float[2] {1};\n          ^\n" +
                  diagnosticText(lines, lines.diagnostics[1]));
    EXPECT_EQ(lines.diagnostics[1].line.withCaret(), "a.x = ;\n      ^\n");
}

TEST_F(SceneFiles, countColumnsInCharacters) {
    SceneFile text("here", "t a; a.s = \"\xC3\xA4\xC3\xA4\"; a.f = float[2] {1};");
    Scene scene;
    text.read(scene);
    EXPECT_EQ(text.diagnosis().diagnostics.at(0).position(), TextPosition()); // without lines
    const Diagnostic diagnostic = text.diagnosisWithLines().diagnostics.at(0);
    EXPECT_EQ(diagnostic.record.position.column - diagnostic.position().column, 2);
    EXPECT_EQ(diagnostic.position().line, 1);
}

TEST_F(SceneFiles, includeNoticesIfRequested) {
    for (const Notices notices : {Notices::No, Notices::Yes}) {
        SceneFile text("here", "t a;\nu a;");
        Scene scene;
        text.read(scene, {.notices = notices});
        EXPECT_TRUE(text.diagnosis().isOk());
        EXPECT_FALSE(text.diagnosis().hasErrors());
        EXPECT_EQ(text.diagnosis().warnings(), notices == Notices::Yes ? 1U : 0U);
    }
}

TEST_F(SceneFiles, keepErrorsThatTheReaderThrows) {
    SceneFile text("here", "oops = 5;");
    Scene scene;
    text.read(scene);
    EXPECT_FALSE(text.diagnosis().isOk());
    ASSERT_EQ(text.diagnosis().diagnostics.size(), 1U);
    EXPECT_EQ(text.diagnosis().diagnostics[0].record.severity, LogSeverity::Error);
}

TEST_F(SceneFiles, referToBytesOfOthers) {
    const auto bytes = std::make_shared<const std::string>("t a; a.f = float[2] {1};");
    {
        SceneFile text("here", *bytes, bytes);
        EXPECT_FALSE(text.isReadOnce());
        Scene scene;
        text.read(scene);
        EXPECT_EQ(text.diagnosisWithLines().diagnostics.at(0).line.text, *bytes);
        EXPECT_EQ(bytes.use_count(), 2);
    }
    EXPECT_EQ(bytes.use_count(), 1);
}

TEST_F(SceneFiles, keepTheHeaderOfTheSceneThatTheyAreMergedInto) {
    for (const bool isMerge : {false, true}) {
        Scene scene;
        SceneFile("first", "# version: 2\n# time: noon\nt a;").read(scene);
        SceneFile("second", "t b;").read(scene, {.isMerge = isMerge});
        EXPECT_EQ(scene.fileVersion(), isMerge ? 2U : VRX_FILE_VERSION_1);
        EXPECT_EQ(scene.fileTime() == "noon", isMerge);
        EXPECT_EQ(scene.nodeCount(), 2U);
    }
}

TEST_F(SceneFiles, stopWhenAnObserverAsks) {
    std::string text = "t a; a.x = 1;\n";
    while (text.size() < 2 * File::maxBlockSize)
        text += "a.x = 2;\n";
    SceneFile file("here", text, nullptr);
    Scene scene;
    std::size_t fetched = 0;
    const auto onFetch = [&](std::size_t bytes) {
        fetched += bytes;
        file.requestStop();
    };
    file.read(scene, {.onFetch = onFetch});
    EXPECT_LE(fetched, File::maxBlockSize);
    EXPECT_EQ(file.diagnosis().readError, "stopped on request");
    EXPECT_EQ(kindsOf(file.diagnosis()), std::vector<std::string>{"stopped"});
}

TEST_F(SceneFiles, stopWhenAnObserverOfAPipeAsks) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    for (const std::size_t call : {1U, 2U}) { // while the pipe is read, and while its text is parsed
        std::thread writer([&] { std::ofstream(path("pipe")) << "t a; a.x = 1;\n"; });
        SceneFile file(String(std::string_view(path("pipe"))));
        Scene scene;
        std::size_t calls = 0;
        std::size_t fetched = 0;
        const auto onFetch = [&](std::size_t bytes) {
            fetched += bytes;
            if (bytes != 0 || calls != 0)
                if (++calls == call)
                    file.requestStop();
        };
        file.read(scene, {.onFetch = onFetch});
        writer.join();
        EXPECT_EQ(fetched, 14U);
        EXPECT_EQ(file.diagnosis().readError, "stopped on request");
        EXPECT_FALSE(file.diagnosis().isAccepted);
        EXPECT_EQ(scene.findNode("a"), nullptr);
    }
}

TEST_F(SceneFiles, areReadFromTheFileSystem) {
    SceneFile found(String(std::string_view(file("a.vrn", mistakes))));
    EXPECT_FALSE(found.isReadOnce());
    Scene scene;
    std::size_t fetched = 0;
    found.read(scene, {.onFetch = [&](std::size_t bytes) { fetched += bytes; }});
    EXPECT_EQ(fetched, std::string_view(mistakes).size());
    EXPECT_NE(scene.findNode("a"), nullptr);
    EXPECT_EQ(std::string(found.folder()) + "/a.vrn", path("a.vrn"));

    SceneFile missing(String(std::string_view(path("b.vrn"))));
    missing.read(scene);
    EXPECT_EQ(missing.diagnosis().readError, "No such file or directory");
    EXPECT_FALSE(missing.diagnosis().isOk());
    EXPECT_TRUE(missing.diagnosis().hasErrors());
}

TEST_F(SceneFiles, keepWhatCanBeReadOnlyOnce) {
    const std::string pipe = path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    SceneFile found{String(std::string_view(pipe))};
    EXPECT_TRUE(found.isReadOnce());
    std::jthread writer([&] { std::ofstream(pipe) << "t a; a.f = float[2] {1};"; });
    Scene scene;
    found.read(scene);
    ASSERT_EQ(found.diagnosis().diagnostics.size(), 1U);
    EXPECT_EQ(found.diagnosisWithLines().diagnostics[0].line.text, "t a; a.f = float[2] {1};");
}

TEST_F(SceneFiles, areCheckedByTheCatalogueOfTheScene) {
    const auto catalogue = std::make_shared<const Catalogue>(readCatalogue(
        R"({"types": {"t": {"inputs": {"m": {"type": "String", "default": "a", "enum": ["a"]},
                                       "f": {"type": "String", "file": true}}}}})"));
    const auto check = [&](const char* text, bool isRecorded, const check::Options& options = {}) {
        SceneFile found(String(std::string_view(path("a.vrn"))), text);
        Scene scene;
        scene.setCatalogue(catalogue);
        if (isRecorded)
            found.recordSources();
        found.read(scene);
        found.check(scene, options);
        return kindsOf(found.diagnosis());
    };
    using Kinds = std::vector<std::string>;
    (void)file("there", "");
    EXPECT_EQ(check("t n; n.m = \"b\"; n.zzz = 1;", true), (Kinds{"notListed", "unknownInput"}));
    EXPECT_EQ(check("t n; n.m = \"b\"; n.zzz = 1;", true, {.ignored = {"notListed"}}), (Kinds{"unknownInput"}));
    EXPECT_EQ(check("t n; n.m = \"b\"; n.zzz = 1;", false), (Kinds{"enumWarning"})); // the reader's own
    EXPECT_EQ(check("t n; n.f = \"there\";", true), Kinds{});                        // in the folder of the file
    EXPECT_EQ(check("t n; n.f = \"here\";", true), (Kinds{"missingFile"}));
    EXPECT_EQ(check("t n; n.zzz = 1; n.x = ;", true), (Kinds{"badToken"})); // not read to the end
}

TEST_F(SceneFiles, thatFailHaveNoDiagnostics) {
    SceneFile text("here", "t a; a.f = float[2] {1};");
    Scene scene;
    text.read(scene);
    text.fail("no memory");
    EXPECT_TRUE(text.diagnosis().diagnostics.empty());
    EXPECT_EQ(text.diagnosis().readError, "no memory");
    EXPECT_EQ(text.diagnosis().name, "here");
    EXPECT_FALSE(text.diagnosis().isOk());
}

TEST_F(SceneFiles, truncateMessagesBeyondATotalLength) {
    const std::string name(1 << 20, 'x');
    std::string statements = "t a;\n";
    for (int i = 0; i < 80; ++i)
        statements += "a.b" + std::to_string(i) + " = " + name + ";\n"; // no such node
    SceneFile text("here", std::string_view(statements));
    Scene scene;
    text.read(scene);
    const std::vector<Diagnostic>& found = text.diagnosis().diagnostics;
    ASSERT_EQ(found.size(), 80U);
    EXPECT_GT(found.front().record.text.len(), name.size());
    EXPECT_EQ(found.back().record.text.len(), 203U);
    EXPECT_TRUE(found.back().record.text.view().ends_with("..."));
}

TEST(Kind, marksWhatIsNotTheReaders) {
    const LogRecord notice{LogSeverity::Notice, "text", {}, nullptr};
    const LogRecord finding{LogSeverity::Warning, "text", {}, check::messages::unknownInput};
    const LogRecord warning{LogSeverity::Warning, "text", {}, nullptr};
    EXPECT_EQ(markOf(notice), " [check]");
    EXPECT_EQ(markOf(finding), " [unknownInput]");
    EXPECT_EQ(markOf(warning), "");
    EXPECT_EQ(kindOf(warning), nullptr);
    EXPECT_STREQ(kindOf(finding), "unknownInput");
}

} // namespace vrn::test

#include "scene/core/OutputFile.h"

#include "tests/support/Reading.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace vrn::test {

namespace fs = std::filesystem;

namespace {

class OutputFiles : public testing::Test {
protected:
    [[nodiscard]] std::string at(const char* name) const { return folder.at(name); }
    [[nodiscard]] static std::string textOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::ptrdiff_t count() const {
        return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
    }

    // Expects that "link" is a link to "a".
    void expectToWriteThroughTheLink() const {
        OutputFile file(at("link"));
        file.write("new");
        file.commit();
        EXPECT_EQ(textOf(at("a")), "new");
        EXPECT_TRUE(fs::is_symlink(at("link")));
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(OutputFiles, appearWhenTheyAreCommitted) {
    {
        OutputFile file(at("a"));
        file.write("one ");
        file.write("two");
        EXPECT_FALSE(fs::exists(at("a")));
        file.commit();
    }
    EXPECT_EQ(textOf(at("a")), "one two");
    { OutputFile(at("a")).write("never"); }
    EXPECT_EQ(textOf(at("a")), "one two");
    EXPECT_EQ(count(), 1);
}

TEST_F(OutputFiles, areNowhereBeforeThat) {
    const int unnamed = open(folder.path().c_str(), O_WRONLY | O_TMPFILE, 0600);
    if (unnamed < 0)
        GTEST_SKIP() << "the file system has no files without a name";
    close(unnamed);
    OutputFile file(at("a"));
    file.write("one");
    EXPECT_EQ(count(), 0) << "a process that is killed now leaves nothing";
    file.commit();
    EXPECT_EQ(count(), 1);
}

TEST_F(OutputFiles, replaceWhatALinkLeadsToAndKeepItsMode) {
    std::ofstream(at("a")) << "old";
    fs::permissions(at("a"), fs::perms(0604));
    fs::create_symlink("a", at("link"));
    expectToWriteThroughTheLink();
    EXPECT_EQ(fs::status(at("a")).permissions(), fs::perms(0604));
}

TEST_F(OutputFiles, areMadeWhereALinkToNothingLeads) {
    fs::create_symlink("a", at("link"));
    expectToWriteThroughTheLink();
}

TEST_F(OutputFiles, mayHaveTheLongestOfNames) {
    const std::string name = at(std::string(255, 'n').c_str());
    OutputFile file(name);
    file.write("new");
    file.commit();
    EXPECT_EQ(textOf(name), "new");
}

TEST_F(OutputFiles, reportFailedSystemCalls) {
    for (const std::string& path : {folder.path(), at("none/a"), std::string("/dev/null"), std::string()}) {
        try {
            OutputFile file(path);
            ADD_FAILURE() << path;
        } catch (const OutputFileError& error) {
            EXPECT_EQ(error.path(), path);
            EXPECT_NE(error.code().value(), 0);
        }
    }
    EXPECT_EQ(count(), 0);
}

} // namespace vrn::test

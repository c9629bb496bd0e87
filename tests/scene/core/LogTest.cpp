#include "tests/support/Reading.h"

#include <thread>

namespace vrn::test {

TEST(Log, writesLinesToStandardErrorWithControlCharactersEscaped) {
    testing::internal::CaptureStderr();
    logError("%s", "100%s \x1b[31m\n");
    logWarning("%d", 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: 100%s \\x1B[31m\\n\nwarning: 5\n");
}

TEST(Log, recordsOfAKindHaveOneFormat) {
    static constexpr char format[] = "number %d";
    Log heard;
    const ScopedLogSink sink([&](const LogRecord& r) { heard.push_back(r); });
    logError(TextPosition{1, 2}, format, 5);
    logWarning(format, 6);
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].format, format);
    EXPECT_EQ(heard[1].format, format);
}

TEST(Log, leavesNoticesToThoseWhoAsk) {
    testing::internal::CaptureStderr();
    writeLog({LogSeverity::Notice, "to nobody", {1, 2}});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    Log heard;
    const ScopedLogSink sink([&](const LogRecord& r) { heard.push_back(r); }, Notices::Yes);
    writeLog({LogSeverity::Notice, "to one", {1, 2}});
    EXPECT_EQ(heard.size(), 1U);
}

TEST(Log, goesToTheInnermostSinkOfTheThread) {
    Log outer;
    Log inner;
    Log other;
    const ScopedLogSink outerSink([&](const LogRecord& r) { outer.push_back(r); });
    logError("%s", "a");
    {
        const ScopedLogSink innerSink([&](const LogRecord& r) { inner.push_back(r); });
        logWarning({3, 4}, "%s", "b");
        std::thread([&] {
            const ScopedLogSink sink([&](const LogRecord& r) { other.push_back(r); });
            logError({5, 6}, "%s", "c");
        }).join();
    }
    logError("%s", "d");
    EXPECT_EQ(outer, (Log{error(0, 0, "a"), error(0, 0, "d")}));
    EXPECT_EQ(inner, (Log{warning(3, 4, "b")}));
    EXPECT_EQ(other, (Log{error(5, 6, "c")}));
}

} // namespace vrn::test

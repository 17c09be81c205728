#include "Platform/Log.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::Not;

// A debug, a default and an error message.
void logOneOfEachLevel(os_log_t log) {
    os_log_with_type(log, OS_LOG_TYPE_DEBUG, "routine");
    os_log_with_type(log, OS_LOG_TYPE_DEFAULT, "{event} %s");
    os_log_with_type(log, OS_LOG_TYPE_ERROR, "failure");
}

TEST(LogTest, ACaptureTakesLinesFromItsLevelUpAndPutsTheLevelBackAtItsEnd) {
    const os_log_t log = os_log_create("test.velto", "Levels");
    const bool wasEnabled = os_log_type_enabled(log, OS_LOG_TYPE_DEBUG);
    const auto linesFrom = [log](os_log_type_t level) {
        const LogCapture capture(level);
        logOneOfEachLevel(log);
        return capture.lines();
    };
    const auto routine = FieldsAre("Levels", OS_LOG_TYPE_DEBUG, "routine");
    const auto event = FieldsAre("Levels", OS_LOG_TYPE_DEFAULT, "{event} %s");
    const auto failure = FieldsAre("Levels", OS_LOG_TYPE_ERROR, "failure");
    EXPECT_THAT(linesFrom(OS_LOG_TYPE_ERROR), ElementsAre(failure));
    EXPECT_THAT(linesFrom(OS_LOG_TYPE_DEFAULT), ElementsAre(event, failure));
    EXPECT_THAT(linesFrom(OS_LOG_TYPE_DEBUG), ElementsAre(routine, event, failure));
    EXPECT_EQ(os_log_type_enabled(log, OS_LOG_TYPE_DEBUG), wasEnabled);
}

// Each expectation runs in a new process, since the variable is read once.
class LogEnvironmentTest : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    void TearDown() override { unsetenv("VELTO_LOG"); }

    static void logAndExit() {
        logOneOfEachLevel(os_log_create("test.velto", "Child"));
        std::exit(0); // NOLINT(concurrency-mt-unsafe): the lines are written out on the way
    }
};

TEST_F(LogEnvironmentTest, StandardErrorShowsTheLevelAskedFor) {
    const auto routine = HasSubstr("[test.velto:Child] routine\n");
    const auto event = HasSubstr("[test.velto:Child] {event} %s\n");
    const auto failure = HasSubstr("[test.velto:Child] failure\n");
    setenv("VELTO_LOG", "debug", 1);
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), AllOf(routine, event, failure));
    setenv("VELTO_LOG", "default", 1);
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), AllOf(Not(routine), event, failure));
    setenv("VELTO_LOG", "off", 1);
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), Not(failure));
    unsetenv("VELTO_LOG");
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), AllOf(Not(event), failure));
}

TEST_F(LogEnvironmentTest, AStalledStandardErrorStallsNobodyAndOverrunsAreCounted) {
    setenv("VELTO_LOG", "debug", 1);
    const auto logIntoAFullPipe = [] {
        constexpr unsigned kSecondsUntilKilled = 30;
        alarm(kSecondsUntilKilled);
        signal(SIGPIPE, SIG_IGN);
        int ends[2]; // nobody reads the other end
        if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0)
            _exit(2);
        const os_log_t log = os_log_create("test.velto", "Child");
        for (int i = 0; i < 20'000; ++i)
            os_log_with_type(log, OS_LOG_TYPE_DEBUG, "many");
        const bool isCounted = os_log_overrun_count() > 0;
        close(ends[0]); // lets the writer go on
        _exit(isCounted ? 0 : 1);
    };
    EXPECT_EXIT(logIntoAFullPipe(), ExitedWithCode(0), "");
}

} // namespace
} // namespace VeltoTouch::Tests

#include "Platform/Log.h"

#include <csignal>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

constexpr os_log_type_t kTypes[]{OS_LOG_TYPE_DEBUG, OS_LOG_TYPE_DEFAULT, OS_LOG_TYPE_ERROR};

// "Category/type: message".
std::vector<std::string> textsOf(const LogCapture& capture) {
    std::vector<std::string> texts;
    for (const auto& line : capture.lines())
        texts.push_back(line.category + '/' + std::to_string(line.type) + ": " + line.message);
    return texts;
}

void logOneOfEachLevel(os_log_t log) {
    os_log_with_type(log, OS_LOG_TYPE_DEBUG, "routine");
    os_log_with_type(log, OS_LOG_TYPE_DEFAULT, "event");
    os_log_with_type(log, OS_LOG_TYPE_ERROR, "failure");
}

TEST(LogTest, TakesMessagesFromTheChosenLevelUp) {
    const os_log_t log = os_log_create("test.velto", "Levels");
    // The types in kTypes stand in the order of their weight.
    for (std::size_t least = 0; least < std::size(kTypes); ++least) {
        const LogCapture capture(kTypes[least]);
        logOneOfEachLevel(log);
        EXPECT_EQ(capture.lines().size(), std::size(kTypes) - least);
        for (std::size_t i = 0; i < std::size(kTypes); ++i)
            EXPECT_EQ(os_log_type_enabled(log, kTypes[i]), i >= least) << "least " << least << ", type " << i;
    }
}

TEST(LogTest, LinesKeepTheirOrderCategoryAndLevel) {
    const LogCapture capture(OS_LOG_TYPE_DEBUG);
    os_log_with_type(os_log_create("test.velto", "One"), OS_LOG_TYPE_ERROR, "{first}");
    os_log_with_type(os_log_create("test.velto", "Two"), OS_LOG_TYPE_DEBUG, "second %s");
    os_log_with_type(os_log_create("test.velto", "One"), OS_LOG_TYPE_DEFAULT, "");
    EXPECT_THAT(textsOf(capture), ElementsAre("One/16: {first}", "Two/2: second %s", "One/0: "));
}

TEST(LogTest, ACaptureStartsEmptyAndPutsTheLevelBackAtItsEnd) {
    const os_log_t log = os_log_create("test.velto", "Back");
    const bool wasEnabled = os_log_type_enabled(log, OS_LOG_TYPE_DEBUG);
    for (const os_log_type_t level : {OS_LOG_TYPE_DEBUG, OS_LOG_TYPE_ERROR}) {
        {
            const LogCapture capture(level);
            os_log_with_type(log, OS_LOG_TYPE_ERROR, "left behind");
        }
        EXPECT_EQ(os_log_type_enabled(log, OS_LOG_TYPE_DEBUG), wasEnabled);
    }
    EXPECT_THAT(textsOf(LogCapture(OS_LOG_TYPE_DEBUG)), ElementsAre());
}

TEST(LogTest, ACaptureHasEveryLineOfEveryThreadInTheOrderOfThatThread) {
    constexpr int kLines = 200;
    const LogCapture capture(OS_LOG_TYPE_DEBUG);
    {
        std::vector<std::jthread> threads;
        for (const char* const category : {"T1", "T2", "T3", "T4"}) {
            threads.emplace_back([category] {
                for (int i = 0; i < kLines; ++i)
                    os_log_with_type(os_log_create("test.velto", category), OS_LOG_TYPE_DEBUG, std::to_string(i));
            });
        }
    }
    std::map<std::string, int> next;
    for (const auto& line : capture.lines())
        ASSERT_EQ(line.message, std::to_string(next[line.category]++)) << line.category;
    EXPECT_EQ(next, (std::map<std::string, int>{{"T1", kLines}, {"T2", kLines}, {"T3", kLines}, {"T4", kLines}}));
}

// Each test runs in a new process, since the variable is read once.
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
    const auto event = HasSubstr("[test.velto:Child] event\n");
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
